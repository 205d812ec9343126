// Messages for whoever runs the program.
#pragma once

#include <string>

// One line on standard error, behind the program's name. What a terminal would act on is escaped.
void say(const std::string& text);
