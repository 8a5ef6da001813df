#ifndef NU_SELFTEST_REPORT_H
#define NU_SELFTEST_REPORT_H

#include <string>

#include "statement.h"

std::string Text(const Statement& statement);
std::string JsonText(const Statement& statement);
// One page without any other file.
std::string HtmlText(const Statement& statement);

#endif
