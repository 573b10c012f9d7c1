// The files of a sandbox folder. Failures are std::runtime_error with the file and the reason in words.
#pragma once

#include <string>

namespace sandbox {

constexpr const char* privateKeyFile = "private.key";
constexpr const char* publicKeyFile = "public.key";
constexpr const char* catalogueFile = "catalogue.json";
constexpr const char* salesFile = "sales.db";

/// Reads a whole file.
std::string ReadFile(const std::string& path);

/// Writes a file that does not exist yet, with that mode whatever the umask allows beyond it. An existing file is a
/// failure and stays as it is.
void WriteNewFile(const std::string& path, const std::string& text, unsigned mode);

}  // namespace sandbox
