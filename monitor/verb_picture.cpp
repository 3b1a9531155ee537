#include <ctime>

#include "monitor/failure.hpp"
#include "monitor/output.hpp"
#include "monitor/picture_writers.hpp"
#include "monitor/verbs.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

// Without --format, the ending of the file's name decides.
std::string formatOf(const CommandLine& line) {
  constexpr const char* kFormats[] = {"text", "svg", "dot", "html"};
  const auto wanted = line.value('f');
  const std::string file = line.value('o').value_or("");
  for (const char* format : kFormats) {
    if (wanted ? *wanted == format : file.ends_with(std::string(".") + format)) return format;
  }
  if (wanted) throw Failure("--format must be text, svg, dot or html, not " + visible(*wanted));
  return "text";
}

}  // namespace

int runPicture(int argc, char** argv) {
  const CommandLine line(argc, argv,
                         {{"format", 'f', true}, {"output", 'o', true}, {"unfold", 'U'}}, 0);
  const std::string format = formatOf(line);
  const auto file = line.value('o');
  const Storage storage = readStorageWithProgress();
  const Picture picture = pictureOf(storage, std::time(nullptr), !line.has('U'));
  const std::string text = format == "svg"    ? pictureAsSvg(picture)
                           : format == "dot"  ? pictureAsDot(picture)
                           : format == "html" ? pictureAsHtml(picture)
                                              : pictureAsText(picture, file ? Screen{} : screen());
  if (file) {
    replaceFile(*file, text);
  } else {
    print(text);
  }
  return 0;
}

}  // namespace tavrenix::monitor
