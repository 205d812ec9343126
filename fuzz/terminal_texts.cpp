// Texts of unknown origin on their way to a terminal, and what is said of commands' outputs.
#include <nlohmann/json.hpp>

#include "fuzz/support.h"
#include "plan/check/output_shapes.h"
#include "plan/text/printable.h"
#include "plan/text/wrapped.h"

// The input in two: what a command wrote to standard output, and to standard error.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> texts = fuzz::sections(data, size, 2);
    const std::string shown = printable(texts[0]);
    for (const char c : shown) {
        const auto byte = static_cast<unsigned char>(c);
        fuzz::require(byte >= 0x20 && byte != 0x7F, "nothing that a terminal acts on");
    }
    fuzz::require(printable(shown) == shown, "what is printable stays as it is");
    fuzz::require(columns_of(shown) <= shown.size(), "no character has two columns here");
    fuzz::require(!has_control_characters(shown), "what is printable has no control character");
    const std::string harmless = harmless_lines(texts[0]);
    for (std::size_t i = 0; i < harmless.size(); ++i) {
        const char c = harmless[i];
        const bool is_blank = c == '\n' || c == '\t' || (c == '\r' && harmless[i + 1] == '\n');
        fuzz::require(is_blank || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F),
                      "nothing that a terminal acts on in lines");
    }
    const std::string in_json = nlohmann::json(shown + "\u202e\U000e0001").dump();
    fuzz::require(nlohmann::json::parse(printable_json(in_json)) == nlohmann::json::parse(in_json),
                  "escaped JSON says the same");
    const std::string lines = wrapped(shown, "", "  ");
    fuzz::require(!lines.empty() && lines.back() == '\n', "lines have their end");
    for (const SampleStep& step : sample_steps) {
        static_cast<void>(check_shape(step, texts[0], texts[1]));
    }
    return 0;
}
