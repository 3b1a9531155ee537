#include <algorithm>

#include "lab/image/json.hpp"
#include "lab/image/place.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

// Returns the message of the JSON library without the error number and the place in front.
std::string_view faultOf(std::string_view what) {
  if (const auto end = what.find("] "); what.starts_with('[') && end != what.npos)
    what.remove_prefix(end + 2);
  if (const auto end = what.find(": "); what.starts_with("parse error") && end != what.npos) {
    what.remove_prefix(end + 2);
  }
  return what;
}

// Builds the document from the events of the parser. Refuses what readJSON refuses beyond the
// grammar.
class Builder final : public nlohmann::json_sax<Json> {
 public:
  explicit Builder(std::string_view text) : text_(text) {}
  Json takeDocument() { return std::move(document_); }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& digits) override {
    // The parser reads an integer that does not fit as a fraction.
    if (digits.find_first_of(".eE") == digits.npos) {
      refuseHere("the number " + ob::escaped(digits, 60) + " is out of range");
    }
    return add(value);
  }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // text has none

  bool start_object(std::size_t /*size*/) override { return open(Json::object()); }
  bool key(string_t& value) override {
    levels_.back().key = std::move(value);
    return true;
  }
  bool end_object() override {
    refuseRepeatedKeys();
    return close();
  }
  bool start_array(std::size_t /*size*/) override { return open(Json::array()); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    const std::size_t offset = std::min(position == 0 ? 0 : position - 1, text_.size());
    throw ImageError(lineAndColumn(text_, offset) + ": " + ob::escaped(faultOf(error.what()), 160));
  }

 private:
  struct Level {
    Json container;
    std::string key;  // the last one read, in an object
  };

  bool add(Json value) {
    if (levels_.empty()) {
      document_ = std::move(value);
    } else if (Level& level = levels_.back(); level.container.is_object()) {
      // Appends without searching for the key, because that would take quadratic time.
      level.container.get_ref<Json::object_t&>().emplace_back(std::move(level.key),
                                                              std::move(value));
    } else {
      level.container.push_back(std::move(value));
    }
    return true;
  }

  bool open(Json container) {
    if (levels_.size() == kDeepestNesting) refuseHere("the nesting is deeper than 64");
    levels_.push_back({std::move(container), {}});
    return true;
  }

  bool close() {
    Json container = std::move(levels_.back().container);
    levels_.pop_back();
    return add(std::move(container));
  }

  void refuseRepeatedKeys() {
    const auto& members = levels_.back().container.get_ref<const Json::object_t&>();
    std::vector<std::string_view> keys;
    keys.reserve(members.size());
    for (const auto& member : members) keys.emplace_back(member.first);
    std::sort(keys.begin(), keys.end());
    const auto twice = std::adjacent_find(keys.begin(), keys.end());
    if (twice == keys.end()) return;
    levels_.back().key = *twice;
    refuseHere("the key is there twice");
  }

  [[noreturn]] void refuseHere(const std::string& fault) { refuseFrom(0, Place(text_), fault); }

  // Builds the place from the top down. Recurses, because each place borrows the one above it.
  [[noreturn]] void refuseFrom(std::size_t depth, const Place& place, const std::string& fault) {
    if (depth == levels_.size()) place.refuse(fault);
    const Level& level = levels_[depth];
    if (level.container.is_object()) refuseFrom(depth + 1, place.at(level.key), fault);
    refuseFrom(depth + 1, place.at(level.container.size()), fault);
  }

  std::string_view text_;
  std::vector<Level> levels_;
  Json document_;
};

}  // namespace

Json readJSON(std::string_view text) {
  // The parser takes a zero byte for the end of the text and would silently drop the rest.
  if (const std::size_t zero = text.find('\0'); zero != text.npos) {
    throw ImageError(lineAndColumn(text, zero) + ": JSON holds no zero bytes");
  }
  Builder builder(text);
  Json::sax_parse(text.begin(), text.end(), &builder);
  return builder.takeDocument();
}

}  // namespace tavrenix::lab
