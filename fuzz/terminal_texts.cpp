// Texts of unknown origin on their way to a terminal, and what is said of commands' outputs.
#include <nlohmann/json.hpp>

#include "fuzz/support.h"
#include "plan/check/output_shapes.h"
#include "plan/text/printable.h"
#include "plan/text/wrapped.h"

// The input in two: what a command wrote to standard output, and to standard error.
void try_input(fuzz::Input input) {
    const auto moves_terminal = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    };
    const std::vector<std::string> texts = input.sections(2);
    const std::string shown = printable(texts[0]);
    require(std::none_of(shown.begin(), shown.end(), moves_terminal),
            "nothing that a terminal acts on");
    require(printable(shown) == shown, "what is printable stays as it is");
    require(columns_of(shown) <= shown.size(), "no character has two columns here");
    require(!has_control_characters(shown), "what is printable has no control character");
    const std::string harmless = harmless_lines(texts[0]);
    for (std::size_t i = 0; i < harmless.size(); ++i) {
        const char c = harmless[i];
        const bool is_blank = c == '\n' || c == '\t' || (c == '\r' && harmless[i + 1] == '\n');
        require(is_blank || !moves_terminal(c), "nothing that a terminal acts on in lines");
    }
    const std::string in_json = nlohmann::json(shown + "\u202e\U000e0001").dump();
    require(nlohmann::json::parse(printable_json(in_json)) == nlohmann::json::parse(in_json),
            "escaped JSON says the same");
    const std::string lines = wrapped(shown, "", "  ");
    require(!lines.empty() && lines.back() == '\n', "lines have their end");
    for (const SampleStep& step : sample_steps) {
        if (step.command != nullptr) {
            static_cast<void>(check_shape(step, texts[0], texts[1]));
        }
    }
}
