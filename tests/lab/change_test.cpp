// Requests to the simulated driver, and the contents of the image's file afterwards.
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "host/registry_names.hpp"
#include "lab/driver.hpp"
#include "lab/image/image_file.hpp"
#include "lab/simulated_host.hpp"
#include "tests/lab/lab_files.hpp"

namespace {

std::string gImage;                // the file whose contents are noted
std::vector<std::string> gSynced;  // its contents at each call of fsync
bool gSyncFails = false;
bool gIsReplaced = false;  // by another program, just before the lock

}  // namespace

// Called instead of the functions of the C library.
extern "C" int fsync(int /*file*/) {
  gSynced.push_back(tavrenix::lab::contentsOf(gImage));
  errno = EIO;
  return gSyncFails ? -1 : 0;
}

extern "C" int flock(int file, int operation) {
  if (gIsReplaced) std::filesystem::copy_file(gImage, gImage + ".new");
  if (gIsReplaced) std::filesystem::rename(gImage + ".new", gImage);
  return static_cast<int>(::syscall(SYS_flock, file, operation));
}

namespace tavrenix::lab {
namespace {

// Writes a request in JSON to an entry, as a client does.
KernelStatus write(SimulatedHost& host, const std::string& request, EntryID id = 100) {
  auto& registry = host.memory().registry();
  const ScopedHandle entry(registry, registry.findServiceByEntryID(id));
  return registry.setProperty(entry.get(), registry::kProperties,
                              *valueFromJSON(readJSON(request), Place()));
}

KernelStatus disable(SimulatedHost& host, const std::string& path) {
  return write(host, R"({"PathState": {")" + path + "\": 3}}");
}

class Change : public testing::Test {
 protected:
  void load(const std::string& text = kSample) {
    folder_.write(text);
    host_.load(path_);
  }
  // The generation, and the states of all paths.
  std::string shown() const {
    const Image image = Image::parse(contentsOf(path_));
    std::string text = std::to_string(image.generation()) + ':';
    for (const ImageEntry& entry : image.entries())
      if (entry.isPath) text += ' ' + std::to_string(entry.statistics->state);
    return text;
  }

  ImageFolder folder_;
  const std::string path_ = folder_.path();
  std::string reported_;
  SimulatedHost host_{[this](std::string_view line) { reported_.append(line).append("\n"); }};
};

TEST_F(Change, ReachesTheFileAndTheLiveHostBesideChangesOfOthers) {
  std::string text = kSample;
  load(text.insert(text.find('"'), R"("writeStatuses": [-5, 0, 7], )"));
  SimulatedHost other([](std::string_view) {});
  other.load(path_);
  EXPECT_EQ(disable(host_, "0101"), -5);
  const std::string before = contentsOf(path_);
  gImage = path_;
  gSynced.clear();
  EXPECT_EQ(disable(other, "0102"), kSuccess);
  EXPECT_EQ(gSynced, (std::vector{before, contentsOf(path_)})) << "a power cut could empty it";
  EXPECT_EQ(disable(host_, "0101"), 7);
  EXPECT_EQ(disable(host_, "0103"), kSuccess);
  EXPECT_EQ(shown(), "3: 0 128 129 0 2 128");
  EXPECT_EQ(host_.memory().tunable().generation(), 3U);
  EXPECT_EQ(host_.memory().tunable().pathStatistics(102)->state, 128);
}

TEST_F(Change, IsMadeWholeOrNotAtAll) {
  load();
  for (const char* request :
       {R"({"Algorithm": "Fastest", "Batch Count": 1})", R"({"PathState": {}})",
        R"({"Algorithm": "Least Bytes", "Batch Count": 4294967296})",
        R"({"PathState": {"0101": 3, "0102": 1}})", R"({"PathState": {"0101": 3, "0201": 3}})",
        R"({"PathState": {"0101": 3}, "Batch Count": 1})"}) {
    EXPECT_EQ(write(host_, request), kBadRequest) << request;
    EXPECT_EQ(write(host_, R"({"Algorithm": "Least Bytes", "Batch Count": 1})", 101), kBadRequest);
    EXPECT_EQ(contentsOf(path_), kSample) << request;
  }
  EXPECT_EQ(write(host_, R"({"PathState": {"0101": 3, "0103": 3}})"), kSuccess);
  EXPECT_EQ(shown(), "2: 128 0 129 0 2 128");
}

TEST_F(Change, IsRefusedIfTheFileIsLockedBadOrGone) {
  load();
  gImage = path_;
  gIsReplaced = true;
  const auto again = [&] { const LockedImageFile lock(path_, std::chrono::milliseconds(0)); };
  EXPECT_THAT(again, testing::ThrowsMessage<std::system_error>(testing::HasSubstr("locked by")));
  gIsReplaced = false;
  gSyncFails = true;
  EXPECT_EQ(disable(host_, "0101"), -EIO);
  gSyncFails = false;
  EXPECT_EQ(std::exchange(reported_, ""), path_ + ": cannot be written: Input/output error\n");
  EXPECT_EQ(contentsOf(path_), kSample);
  folder_.write("{\"generation\": }");
  EXPECT_EQ(disable(host_, "0101"), -EINVAL);
  EXPECT_THAT(std::exchange(reported_, ""), testing::StartsWith(path_ + ": line 1, column 16: "));
  EXPECT_EQ(contentsOf(path_), "{\"generation\": }");
  std::filesystem::remove(path_);
  EXPECT_EQ(disable(host_, "0101"), -ENOENT);
}

}  // namespace
}  // namespace tavrenix::lab
