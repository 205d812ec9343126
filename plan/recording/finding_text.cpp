#include "plan/recording/finding_text.h"

#include "kiln/strings.h"

bool names_its_lines(const CheckFinding& finding) {
    return finding.text.find(Kiln::join(", ", finding.lines)) != std::string::npos;
}
