#include "monitor/metrics_text.hpp"

#include <cstdio>
#include <map>

#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

std::string escaped(const std::string& value) {
  std::string result;
  for (const char c : visible(value)) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

// Tells equal names apart by their number.
class UniqueNames {
 public:
  std::string name(const std::string& wanted) {
    const int number = ++seen_[wanted];
    return number == 1 ? wanted : wanted + '#' + std::to_string(number);
  }

 private:
  std::map<std::string, int> seen_;
};

}  // namespace

std::string label(const char* name, const std::string& value) {
  return std::string(name) + "=\"" + escaped(value) + '"';
}

void MetricsText::family(const std::string& name, Type type, const std::string& help) {
  name_ = name;
  isKept_ = set_ == Set::all || (set_ == Set::states && type != Type::counter) ||
            (set_ == Set::units && !name.starts_with("tavrenix_path_"));
  if (!isKept_) return;
  text_ += "# HELP " + name + ' ' + help + "\n# TYPE " + name +
           (type == Type::gauge ? " gauge\n" : " counter\n");
}

void MetricsText::begin(const std::string& labels) {
  text_ += name_;
  if (!labels.empty()) text_.append("{").append(labels).append("}");
}

void MetricsText::sample(const std::string& labels, std::uint64_t value) {
  if (!isKept_) return;
  begin(labels);
  text_ += ' ' + std::to_string(value) + '\n';
}

void MetricsText::sample(const std::string& labels, double seconds) {
  if (!isKept_) return;
  begin(labels);
  char number[32];
  std::snprintf(number, sizeof number, " %.6f\n", seconds);
  text_ += number;
}

LabelledStorage::LabelledStorage(const Storage& storage) {
  UniqueNames unitNames;
  for (const Unit& unit : storage.units) {
    const std::string ofUnit = label("unit", unitNames.name(unit.identifier));
    units.emplace_back(&unit, ofUnit);
    UniqueNames pathNames;
    for (const Path& path : unit.paths) {
      paths.emplace_back(&path, ofUnit + ',' + label("path", pathNames.name(path.identifier)));
    }
  }
}

}  // namespace tavrenix::monitor
