#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "commands.h"
#include "files.h"
#include "key_pair.h"

namespace sandbox {
namespace {

constexpr const char* sampleCatalogue = R"({
  "applications": [
    {
      "guid": "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}",
      "name": "Lantern, a sample application",
      "merchant": "Lantern Workshop",
      "taxPercent": "8.25",
      "products": [
        {"SKU": 1042, "Name": "Lantern Standard", "Price": "29.00", "Description": "One seat: the editor and its help"},
        {"SKU": 1043, "Name": "Lantern Studio", "Price": "79.50", "Description": "Three seats, with batch processing"},
        {"SKU": 7, "Name": "Brush collection", "Price": "4.95", "Description": "120 brushes: ink, chalk and oil"},
        {"SKU": 8, "Name": "Printed manual", "Price": "18.25", "Description": "Spiral bound, 212 pages"}
      ]
    },
    {
      "guid": "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}",
      "name": "Lantern, what users of version 0.9 are offered",
      "version": "0.9",
      "merchant": "Lantern Workshop",
      "taxPercent": "8.25",
      "products": [
        {"SKU": 2001, "Name": "Upgrade to Lantern Standard", "Price": "12.00", "Description": "For owners of 0.9"},
        {"SKU": 7, "Name": "Brush collection", "Price": "4.95", "Description": "120 brushes: ink, chalk and oil"}
      ]
    }
  ]
}
)";

struct NewFile {
  std::string path;
  std::string text;
  unsigned mode;
};

void WriteAllOrNone(const std::vector<NewFile>& files) {
  std::vector<std::string> written;
  try {
    for (const NewFile& file : files) {
      WriteNewFile(file.path, file.text, file.mode);
      written.push_back(file.path);
    }
  } catch (...) {
    std::error_code ignored;
    for (const std::string& path : written) std::filesystem::remove(path, ignored);
    throw;
  }
}

}  // namespace

void Init(const InitOptions& options) {
  const std::filesystem::path folder = options.folder;
  for (const char* name : {privateKeyFile, publicKeyFile, catalogueFile}) {
    if (!std::filesystem::exists(std::filesystem::symlink_status(folder / name))) continue;
    throw std::runtime_error(options.folder + " holds " + name +
                             " already, and nothing is overwritten. Serve it with " + "\"kest-sandbox serve " +
                             options.folder + "\", name another folder, or remove the file.");
  }
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::runtime_error("cannot make the folder " + options.folder + ": " + error.message());

  const KeyPair keyPair = KeyPair::Generate(options.bits);
  WriteAllOrNone({{folder / privateKeyFile, keyPair.PrivateText(), 0600},
                  {folder / publicKeyFile, keyPair.PublicText() + "\n", 0644},
                  {folder / catalogueFile, sampleCatalogue, 0644}});
  std::cout << "Made in " << options.folder << ":\n"
            << "  " << privateKeyFile << "     the server's private key, " << options.bits << " bits\n"
            << "  " << publicKeyFile << "      the text that clients are given as TARVOPK\n"
            << "  " << catalogueFile << "  what is sold: a sample to change\n"
            << "Next: kest-sandbox serve " << options.folder << "\n";
}

}  // namespace sandbox
