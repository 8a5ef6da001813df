#ifndef NU_INSPECT_FIELDS_H
#define NU_INSPECT_FIELDS_H

#include <string_view>
#include <vector>

// The separator of fields that any run of blanks keeps apart.
inline constexpr char kBlanks = ' ';

bool IsBlank(char c);

std::string_view Trimmed(std::string_view text);

// The fields of a line without blanks and quotes around them; a separator at the end adds none.
void Split(std::string_view line, char separator, std::vector<std::string_view>* fields);

bool IsNotFiniteWord(std::string_view field);

// Whether a field means to be a number, well-formed or not: only words make a header.
bool LooksLikeNumber(std::string_view field);

#endif
