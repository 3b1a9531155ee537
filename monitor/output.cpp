#include "monitor/output.hpp"

#include <fcntl.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "monitor/failure.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

[[noreturn]] void fail(const std::string& path, const char* what, int error) {
  throw Failure(visible(path) + ": " + what + ": " + std::strerror(error));
}

bool writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace

void print(std::string_view text) {
  if (!writeAll(STDOUT_FILENO, text)) {
    throw Failure(std::string("standard output: cannot be written: ") + std::strerror(errno));
  }
}

std::string readFile(const std::string& path) {
  constexpr std::size_t kMost = std::size_t{64} << 20;
  const OpenFile file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) fail(path, "cannot be opened", errno);
  std::string content;
  std::vector<char> buffer(65536);
  for (;;) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(path, "cannot be read", errno);
    if (count == 0) return content;
    content.append(buffer.data(), static_cast<std::size_t>(count));
    if (content.size() > kMost) fail(path, "cannot be read", EFBIG);
  }
}

void replaceFile(const std::string& path, std::string_view content, unsigned mode) {
  struct stat old {};
  if (::lstat(path.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
    throw Failure(visible(path) + ": is not a regular file, and is not replaced");
  }
  std::string beside = path + ".XXXXXX";
  const OpenFile file(::mkostemp(beside.data(), O_CLOEXEC));
  if (file.get() < 0) fail(path, "cannot be written beside", errno);
  if (!writeAll(file.get(), content) || ::fchmod(file.get(), mode) != 0 ||
      ::fsync(file.get()) != 0 || ::rename(beside.c_str(), path.c_str()) != 0) {
    const int error = errno;
    ::unlink(beside.c_str());
    fail(path, "cannot be replaced", error);
  }
}

Screen screen() {
  Screen screen;
  std::setlocale(LC_CTYPE, "");
  screen.asciiOnly = std::strcmp(::nl_langinfo(CODESET), "UTF-8") != 0;
  const char* columns = std::getenv("COLUMNS");
  if (columns != nullptr) screen.width = std::strtoul(columns, nullptr, 10);
  if (::isatty(STDOUT_FILENO) == 0) return screen;
  winsize size{};
  const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  if (screen.width == 0) screen.width = isKnown ? size.ws_col : 80;
  const char* refusal = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  screen.colours = (refusal == nullptr || *refusal == '\0') && terminal != nullptr &&
                   std::strcmp(terminal, "dumb") != 0;
  return screen;
}

Progress::Progress(std::string work)
    : work_(std::move(work)),
      isTerminal_(::isatty(STDERR_FILENO) != 0),
      next_(std::chrono::steady_clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
  if (width_ != 0) write("");
}

void Progress::show(std::size_t done, std::size_t total) {
  const auto now = std::chrono::steady_clock::now();
  if (!isTerminal_ || now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  write(work_ + ": " + std::to_string(done) + " of " + std::to_string(total));
}

// Blanks hide what the line had before, since not every terminal knows a sequence for that.
void Progress::write(const std::string& text) {
  const std::size_t hidden = width_ - std::min(width_, text.size());
  width_ = text.size();
  std::string line = '\r' + text + std::string(hidden, ' ');
  if (text.empty()) line += '\r';
  writeAll(STDERR_FILENO, line);
}

}  // namespace tavrenix::monitor
