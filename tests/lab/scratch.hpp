// What the tests of this folder share: a folder of their own for files, and entries of images.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tavrenix::lab {

inline std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// A new folder inside where, gone with all that is in it at the end.
class Scratch {
 public:
  explicit Scratch(const std::filesystem::path& where = std::filesystem::temp_directory_path()) {
    std::string pattern = (where / "tavrenix-lab.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
    folder_ = pattern;
  }
  ~Scratch() { std::filesystem::remove_all(folder_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string path(const std::string& name) const { return folder_ / name; }
  std::string write(const std::string& name, std::string_view text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  std::size_t files() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_),
                                                  std::filesystem::directory_iterator()));
  }

 private:
  std::filesystem::path folder_;
};

// Entries of an image: a unit and its paths. The identifiers of all are their IDs, and so are the
// numbers of bytes sent.
inline std::string unitWithPaths(int id, const std::vector<int>& paths) {
  std::string entries;
  std::string parents;
  for (const int path : paths) {
    const std::string digits = std::to_string(path);
    parents += (parents.empty() ? "" : ", ") + digits;
    entries += R"(, {"id": )" + digits + R"(, "class": "KsSCSIHierarchicalLogicalUnit",
      "properties": {"Logical Unit Path Identifier": {"$data": ")" +
               digits + R"("},
        "Protocol Characteristics": {"Physical Interconnect": "Fibre Channel Interface"},
        "Controller Characteristics": {"Unique SCSI Port Identifier": {"$data": "5001"}}},
      "statistics": {"sent": )" +
               digits + R"(, "received": 1, "commands": 2, "state": 0}})";
  }
  const std::string digits = std::to_string(id);
  return R"({"id": )" + digits + R"(, "class": "KsSCSIMultipathedLogicalUnit",
      "parents": [)" +
         parents + R"(], "properties": {"Peripheral Device Type": 0,
        "Logical Unit Unique Identifier": {"$data": ")" +
         digits + R"("},
        "Vendor Identification": "EXAMPLE", "Product Identification": "Simulated LUN",
        "Load Balancing Algorithm": "Modified Round Robin", "Batch Count": 8},
      "statistics": {"sent": )" +
         digits + R"(, "received": 3, "commands": 4}})" + entries;
}

}  // namespace tavrenix::lab
