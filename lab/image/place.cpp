#include "lab/image/place.hpp"

#include <algorithm>

#include "lab/image/json.hpp"
#include "runtime/byte_text.hpp"

namespace tavrenix::lab {

namespace {

constexpr std::size_t kLongestKey = 60;

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$';
}

}  // namespace

// A position in the text of a document, which moves down from value to value. The parser keeps no
// positions, so this reads the text again. REQUIRES: valid JSON up to the wanted value. Stops at
// the end of the text in any case.
class Place::Finder {
 public:
  explicit Finder(std::string_view document) : document_(document) { skipBlanks(); }

  // Move to the wanted value inside the container at this position. Return false if there is none.
  bool enterMember(std::string_view key) {
    return enter('{', [&] {
      const std::size_t start = at_;
      skipValue();
      const auto name = Json::parse(document_.substr(start, at_ - start), nullptr, false);
      skipBlanks();
      ++at_;  // the colon
      skipBlanks();
      return name.is_string() && name.get_ref<const std::string&>() == key;
    });
  }
  bool enterElement(std::size_t index) {
    return enter('[', [&] { return index-- == 0; });
  }

  std::size_t line() const {
    return 1 + static_cast<std::size_t>(
                   std::count(document_.begin(), document_.begin() + std::ptrdiff_t(at_), '\n'));
  }
  std::string_view value() {
    const std::size_t start = at_;
    skipValue();
    return document_.substr(start, at_ - start);
  }

 private:
  // Moves from value to value of the container until isWanted returns true.
  template <class IsWanted>
  bool enter(char bracket, const IsWanted& isWanted) {
    if (peek() != bracket) return false;
    do {
      ++at_;  // the bracket, and then each comma
      skipBlanks();
      if (peek() == '\0' || peek() == ']' || peek() == '}') return false;
      if (isWanted()) return true;
      skipValue();
      skipBlanks();
    } while (peek() == ',');
    return false;
  }

  char peek() const { return at_ < document_.size() ? document_[at_] : '\0'; }
  void skipBlanks() { at_ = std::min(document_.find_first_not_of(" \t\r\n", at_), size()); }
  void skipString() {
    for (++at_; at_ < size() && document_[at_] != '"'; ++at_) {
      if (document_[at_] == '\\') ++at_;
    }
    at_ = std::min(at_ + 1, size());
  }
  void skipValue() {
    std::size_t depth = 0;
    do {
      const char c = peek();
      if (c == '"') {
        skipString();
      } else if (c == '{' || c == '[') {
        ++depth;
        ++at_;
      } else if (c == '}' || c == ']') {
        --depth;
        ++at_;
      } else if (depth > 0) {
        at_ = std::min(document_.find_first_of("\"{}[]", at_), size());
      } else {
        at_ = std::min(document_.find_first_of(",}] \t\r\n", at_), size());
      }
    } while (depth > 0 && at_ < size());
  }
  std::size_t size() const { return document_.size(); }

  std::string_view document_;
  std::size_t at_ = 0;
};

// Returns the position of the value, or of the nearest value above it that the text has.
Place::Finder Place::find() const {
  if (above_ == nullptr) return Finder(document_);
  Finder finder = above_->find();
  Finder inside = finder;
  const bool found = kind_ == Kind::kKey ? inside.enterMember(key_) : inside.enterElement(index_);
  return found ? inside : finder;
}

bool Place::isEntry() const noexcept {
  return kind_ == Kind::kIndex && above_->key_ == "entries" && above_->above_->kind_ == Kind::kTop;
}

const Place* Place::entry() const noexcept {
  const Place* at = this;
  while (at != nullptr && !at->isEntry()) at = at->above_;
  return at;
}

void Place::appendWay(std::string& text) const {
  if (above_ != nullptr) above_->appendWay(text);
  if (kind_ == Kind::kIndex) text += '[' + std::to_string(index_) + ']';
  if (kind_ != Kind::kKey) return;
  if (!key_.empty() && std::all_of(key_.begin(), key_.end(), isPlain)) {
    if (!text.empty()) text += '.';
    text += ob::escaped(key_, kLongestKey);
  } else {
    text += "[\"" + ob::escaped(key_, kLongestKey) + "\"]";
  }
}

std::string Place::text() const {
  std::string way;
  appendWay(way);
  if (way.empty()) way = "top level";
  if (document_.empty()) return way;
  if (const Place* itsEntry = entry()) {
    Finder finder = itsEntry->find();
    const bool hasID = finder.enterMember("id");
    const std::string_view id = finder.value();
    if (hasID && id.size() <= 20 && id.find_first_not_of("0123456789") == id.npos) {
      way.append(" (id ").append(id).append(")");
    }
  }
  return "line " + std::to_string(find().line()) + ": " + way;
}

void Place::refuse(std::string_view fault) const {
  throw ImageError(text() + ": " + std::string(fault));
}

std::string lineAndColumn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::string_view line = before.substr(before.rfind('\n') + 1);  // npos + 1 is 0
  const auto columns =
      std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; });
  return "line " + std::to_string(lines + 1) + ", column " + std::to_string(columns + 1);
}

}  // namespace tavrenix::lab
