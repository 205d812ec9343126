// A Pod. JSON has no comments: they are annotations.
#include <nlohmann/json.hpp>

#include "kiln/strings.h"
#include "plan/limits/commented_text.h"
#include "plan/limits/host_text.h"
#include "plan/text/printable.h"

namespace {

using nlohmann::ordered_json;

constexpr std::size_t most_name_servers = 3;     // more the API refuses, and the resolver ignores
constexpr std::size_t most_search_domains = 32;  // more the API refuses

// A Pod that is filled bit by bit.
class PodWriter {
public:
    explicit PodWriter(const LimitSheet& sheet) : sheet_(sheet), complaints_(sheet.complaints) {}

    LimitsText write() {
        note("about", Kiln::join("; ", sheet_.heading));
        note("limits", Kiln::join("; ", sheet_.notes));
        add_memory();
        add_cpu();
        add_disk();
        add_host_name();
        add_resolver();
        add_shm();
        add_notes();
        // The text is JSON whatever the host says; who reads it on a terminal needs more.
        std::vector<std::string> complaints;
        for (const std::string& complaint : complaints_) {
            complaints.push_back(printable(complaint));
        }
        note("missing", Kiln::join("; ", complaints));
        container_["resources"] = {{"requests", requests_}, {"limits", limits_}};
        spec_["containers"] = ordered_json::array({container_});
        const ordered_json pod = {{"apiVersion", "v1"},
                                  {"kind", "Pod"},
                                  {"metadata", {{"name", name_}, {"annotations", annotations_}}},
                                  {"spec", spec_}};
        return {printable_json(pod.dump(2)) + "\n", std::move(complaints_)};
    }

private:
    // What a comment would say of the member.
    void note(const std::string& about, const std::string& text) {
        if (!text.empty()) {
            annotations_["tarnhwplan/" + about] = text;
        }
    }
    // A limit that a Pod cannot set.
    void note_wanted(const std::string& about, LimitKind kind, const std::string& who,
                     const std::string& unit) {
        if (const std::optional<Limit>& limit = sheet_[kind]) {
            note(about, who + "; wanted " + grouped(limit->value) + unit + ": " + limit->source);
        }
    }
    void refuse(const std::string& what, const std::string& text, const std::string& reason) {
        complaints_.push_back(refusal(what, text, reason));
    }

    void add_memory() {
        if (const std::optional<Limit>& memory = sheet_[LimitKind::memory]) {
            const std::string quantity = std::to_string(memory->value) + "Mi";
            requests_["memory"] = quantity;
            limits_["memory"] = quantity;
            note("memory", memory->source);
        }
        note_wanted("swap", LimitKind::swap, "a Pod sets none, its node does", " MiB");
    }

    void add_cpu() {
        if (const std::optional<Limit>& share = sheet_[LimitKind::cpu_share]) {
            // In thousandths of a core, as the limit below.
            requests_["cpu"] = std::to_string(share->value * 10) + "m";
            note("requests.cpu", share->source);
        }
        if (const std::optional<Limit>& cpu = sheet_[LimitKind::cpu]) {
            limits_["cpu"] = std::to_string(cpu->value * 100) + "m";
            note("limits.cpu", cpu->source);
        }
    }

    void add_disk() {
        if (sheet_.disk_kib) {
            requests_["ephemeral-storage"] = std::to_string(sheet_.disk_kib->barrier) + "Ki";
            limits_["ephemeral-storage"] = std::to_string(sheet_.disk_kib->limit) + "Ki";
            note("ephemeral-storage", sheet_.disk_kib->text);
        }
        if (sheet_.inodes) {
            note("inodes", sheet_.inodes->text);
        }
    }

    void add_shm() {
        if (const std::optional<Limit>& shm = sheet_[LimitKind::shm]) {
            container_["volumeMounts"] =
                ordered_json::array({{{"name", "shm"}, {"mountPath", "/dev/shm"}}});
            spec_["volumes"] = ordered_json::array(
                {{{"name", "shm"},
                  {"emptyDir",
                   {{"medium", "Memory"}, {"sizeLimit", std::to_string(shm->value) + "Mi"}}}}});
            note("shm", shm->source + "; what it holds counts as memory, too");
        }
    }

    void add_host_name() {
        const std::string label = first_label(sheet_.host.hostname);
        if (is_host_name(sheet_.host.hostname) && is_dns_label(label)) {
            spec_["hostname"] = label;
            name_ = label;
            note("hostname", "HOSTNAME: " + printable(sheet_.host.hostname) +
                                 (label == sheet_.host.hostname ? "" : ", up to its first dot"));
        } else if (!sheet_.host.hostname.empty()) {
            refuse("HOSTNAME", sheet_.host.hostname,
                   "a Pod's has up to 63 small letters, digits and hyphens");
        }
    }

    template <class Check>
    ordered_json accepted(const char* what, const std::vector<std::string>& texts, std::size_t most,
                          Check is_good, const char* reason) {
        ordered_json list = ordered_json::array();
        for (const std::string& text : texts) {
            if (!is_good(text)) {
                refuse(what, text, reason);
            } else if (list.size() == most) {
                refuse(what, text, "a Pod takes " + std::to_string(most));
            } else {
                list.push_back(text);
            }
        }
        return list;
    }

    // With the policy "None" nothing else is added to the resolver's settings; it asks for a
    // server.
    void add_resolver() {
        ordered_json servers = accepted("NAMESERVER", sheet_.host.ns_attrs.nameservers,
                                        most_name_servers, is_ip_address, "it is no IP address");
        ordered_json domains =
            accepted("SEARCHDOMAIN", sheet_.host.ns_attrs.search_domains, most_search_domains,
                     is_dns_name, "it is no domain of small letters");
        if (!servers.empty()) {
            spec_["dnsPolicy"] = "None";
            spec_["dnsConfig"]["nameservers"] = std::move(servers);
            note("dnsConfig", "NAMESERVER and SEARCHDOMAIN; names of the cluster are not found so");
        }
        if (!domains.empty()) {
            spec_["dnsConfig"]["searches"] = std::move(domains);
        }
    }

    void add_notes() {
        note("addresses", printable(Kiln::join(" ", sheet_.addresses)));
        note_wanted("tasks", LimitKind::tasks, "a Pod sets no limit, its node does (podPidsLimit)",
                    "");
        note_wanted("descriptors", LimitKind::descriptors, "a Pod sets no limit, its node does",
                    "");
        note_wanted("locked-memory", LimitKind::locked, "a Pod sets no limit, its node does",
                    " MiB");
        if (sheet_.host.nfs_used) {
            note("nfs",
                 "The server has NFS mounts. They are among these, which are not to be copied "
                 "(network, removable, loop and bind mounts); give the Pod volumes for those that "
                 "it "
                 "needs: " +
                     printable(Kiln::join(" ", sheet_.mounts)));
        }
        std::vector<std::string> lacking;
        for (const LinesOfReason& group : lacking_lines(Engine::kubernetes)) {
            lacking.push_back(Kiln::join(", ", group.lines) + ": " + group.reason);
        }
        note("without-equivalent", Kiln::join("; ", lacking));
        note("image", "put the name of the server's image in the place of IMAGE");
    }

    const LimitSheet& sheet_;
    std::vector<std::string> complaints_;
    ordered_json annotations_ = ordered_json::object();
    ordered_json requests_ = ordered_json::object();
    ordered_json limits_ = ordered_json::object();
    ordered_json container_ = {{"name", "server"}, {"image", "IMAGE"}};
    ordered_json spec_ = ordered_json::object();
    std::string name_ = "server";
};

}  // namespace

LimitsText write_kubernetes(const LimitSheet& sheet) {
    return PodWriter(sheet).write();
}
