#ifndef NU_INSPECT_TEXT_H
#define NU_INSPECT_TEXT_H

#include <string>
#include <string_view>

// Numbers as text, the same under every locale.
std::string Fixed(double value, int decimals);
std::string SignedFixed(double value, int decimals);
std::string General(double value, int significantDigits);

// The fewest digits that give back the same double.
std::string Shortest(double value);

// A leading hyphen made a minus sign.
std::string WithMinusSign(std::string text);

// Whole `text` as a number of the form 12.5, -3 or 1e-3; false for anything else, for infinities and NaN.
bool ParseNumber(std::string_view text, double* value);
bool ParseWhole(std::string_view text, long* value);

// `text` with every byte that is not well-formed UTF-8 replaced by U+FFFD and every control character by a blank.
std::string Printable(std::string_view text);

// ASCII letters made small.
std::string Lower(std::string_view text);

// What stands between the quotes of a JSON string, and between the tags or quotes of XML.
std::string JsonEscaped(std::string_view text);
std::string XmlEscaped(std::string_view text);

inline constexpr char kNoMemory[] = "not enough memory for these points";

// The file name without its directories.
std::string FileName(const std::string& path);

#endif
