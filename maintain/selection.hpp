// Which paths an administrator means.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "monitor/storage_facts.hpp"
#include "monitor/verb_options.hpp"

namespace tavrenix::maintain {

class Selection {
 public:
  static const std::vector<monitor::KnownOption> kOptions;

  // Errors: throws monitor::Failure if a number of a host is none.
  explicit Selection(const monitor::CommandLine& line);

  bool isEmpty() const;
  // The options with their values.
  std::vector<std::string> words() const;
  // Returns true if the selection names the path of the unit. Paths by different options are
  // united. Units alone stand for all their paths; beside other options they restrict those.
  bool names(const monitor::Unit& unit, const monitor::Path& path) const;
  // Errors: throws monitor::Failure if the selection is empty, if a part of it names nothing on
  // this host, or if the parts have no path in common with the units.
  void check(const monitor::Storage& storage) const;

 private:
  struct Part {
    char option;
    std::string value;
  };
  bool isNamedBy(const Part& part, const monitor::Unit& unit, const monitor::Path& path) const;

  std::vector<Part> parts_;
};

}  // namespace tavrenix::maintain
