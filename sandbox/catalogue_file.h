// The catalogue of a folder, read anew when its file has changed. It owns the catalogue and tells the log what came of a
// reading. One thread at a time may use it.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <sys/stat.h>

#include "catalogue.h"

namespace spdlog {
class logger;
}

namespace sandbox {

/// How long a change of the file waits at most until it is noticed.
constexpr std::chrono::milliseconds catalogueInterval{500};

class CatalogueFile {
 public:
  /// Reads the file. Throws std::runtime_error with the file and what is wrong in words.
  explicit CatalogueFile(std::string itsPath);

  /// Returns the catalogue; the object stays the same when its file is read anew.
  const Catalogue& Current() const { return catalogue; }

  /// Reads the file when it is another one than at the last look, or has changed since. One that cannot be used leaves
  /// the catalogue as it is, and the log says why, once.
  void Refresh(spdlog::logger& log);

 private:
  /// Looks for what tells one state of the file from another; all zero when there is no file.
  struct ::stat Look() const;
  Catalogue Read() const;

  const std::string path;
  struct ::stat seen;
  Catalogue catalogue;
};

}  // namespace sandbox
