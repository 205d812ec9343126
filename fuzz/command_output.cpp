// The output of df, ipcs and the counting commands.
#include "calc/sample_parsers.h"
#include "fuzz/support.h"
#include "kiln/numbers.h"
#include "kiln/strings.h"

void try_input(fuzz::Input input) {
    const std::string text = input.text();
    parse_count(text);
    parse_shm_pages(text);

    // A sum is that of its lines, each of them behind a header of its own.
    std::int32_t sum = 0;
    const std::vector<std::string> lines = Kiln::split("\n", text, 0);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        sum = Kiln::wrap_add(sum, sum_used_column("header\n" + lines[i]));
    }
    require(sum == sum_used_column(text), "no line changes what another one adds");

    // The C library's conversion agrees wherever it is defined.
    require(Kiln::leading_int64(text.c_str()) == std::strtoll(text.c_str(), nullptr, 10),
            "a leading number is what strtoll reads");
}
