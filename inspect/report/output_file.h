#ifndef NU_INSPECT_OUTPUT_FILE_H
#define NU_INSPECT_OUTPUT_FILE_H

#include <string>
#include <string_view>

// Writes `content` as the whole of the file `path`, "-" being standard output: the old file stays until the new one is
// complete. Throws InputError, and leaves nothing half-written behind.
void WriteFile(const std::string& path, std::string_view content);

// Throws InputError when standard output takes no more.
void Print(std::string_view text);

// The same text for all names that lead to one file.
std::string FileKey(const std::string& path);

// Whether a path means a directory: there is one, or it ends like one.
bool MeansDirectory(const std::string& path);

// Makes the directory if there is none. Throws InputError.
void MakeDirectory(const std::string& path);

std::string InDirectory(const std::string& directory, const std::string& file);

#endif
