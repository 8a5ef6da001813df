#ifndef NU_INSPECT_OUTPUT_FILE_H
#define NU_INSPECT_OUTPUT_FILE_H

#include <string>
#include <string_view>

// Writes `content` as the whole of the file `path`: the old file stays until the new one is complete. Throws
// InputError, and leaves nothing half-written behind.
void WriteFile(const std::string& path, std::string_view content);

// Whether both names lead to one file.
bool SameFile(const std::string& a, const std::string& b);

#endif
