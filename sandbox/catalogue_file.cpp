#include "catalogue_file.h"

#include <spdlog/spdlog.h>

#include <tuple>

#include "files.h"

namespace sandbox {
namespace {

// The time of the last change of any kind is among them, because a tool may set the time of writing back.
auto Marks(const struct ::stat& file) {
  return std::make_tuple(file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec, file.st_mtim.tv_nsec,
                         file.st_ctim.tv_sec, file.st_ctim.tv_nsec);
}

}  // namespace

// The look comes before the reading: what is written in between is seen as a change at the next look.
CatalogueFile::CatalogueFile(std::string itsPath) : path(std::move(itsPath)), seen(Look()), catalogue(Read()) {}

struct ::stat CatalogueFile::Look() const {
  struct ::stat file {};
  if (::stat(path.c_str(), &file) != 0) return {};
  return file;
}

Catalogue CatalogueFile::Read() const {
  const std::string text = ReadFile(path);
  try {
    return Catalogue::FromText(text);
  } catch (const CatalogueError& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

void CatalogueFile::Refresh(spdlog::logger& log) {
  const struct ::stat now = Look();
  if (Marks(now) == Marks(seen)) return;
  seen = now;
  try {
    // A pipe would keep the server waiting for its writer.
    if (now.st_nlink != 0 && !S_ISREG(now.st_mode)) throw std::runtime_error(path + " is no file");
    catalogue = Read();
    log.info("the catalogue has changed and was read: {} applications", catalogue.Applications().size());
  } catch (const std::exception& error) {
    log.error("the catalogue has changed and cannot be used, the one before stays: {}", error.what());
  }
}

}  // namespace sandbox
