#include "lab/driver.hpp"

#include "lab/plist.hpp"
#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

constexpr EntryID kUnit = 100;
constexpr char kGood[] = R"({"Algorithm": "Least Bytes", "Batch Count": 1})";

// A unit with the paths 01AB (entry 201), 02 twice (202, 203), and 03 without statistics (204); 205
// is named 01AB too but is no path.
Image image() {
  return Image::parse(
      R"({"generation": 4294967294, "classes": {"MyUnit": "KsSCSIMultipathedLogicalUnit"}, "entries": [
    {"id": 100, "class": "MyUnit", "parents": [201, 202, 203, 204, 205], "properties": {"Batch Count": 1}},
    {"id": 201, "class": "KsSCSIHierarchicalLogicalUnit", "properties": {"Logical Unit Path Identifier": {"$data": "01ab"}},
     "statistics": {"sent": 1, "received": 2, "commands": 3, "state": 1}},
    {"id": 202, "class": "KsSCSIHierarchicalLogicalUnit", "properties": {"Logical Unit Path Identifier": {"$data": "02"}},
     "statistics": {"sent": 1, "received": 2, "commands": 3, "state": 130}},
    {"id": 203, "class": "KsSCSIHierarchicalLogicalUnit", "properties": {"Logical Unit Path Identifier": {"$data": "02"}},
     "statistics": {"sent": 1, "received": 2, "commands": 3, "state": 0}},
    {"id": 204, "class": "KsSCSIHierarchicalLogicalUnit", "properties": {"Logical Unit Path Identifier": {"$data": "03"}}},
    {"id": 205, "class": "KsService", "properties": {"Logical Unit Path Identifier": {"$data": "01AB"}}}
  ]})");
}

KernelStatus ask(Image& target, std::string_view request, EntryID entry = kUnit,
                 const ob::String& name = registry::kProperties) {
  return actOnWrite(target, entry, name, *valueFromJSON(readJSON(request), Place()));
}

int stateOf(const Image& target, EntryID path) {
  return target.find(path)->statistics->state;
}

TEST(Driver, PublishesAlgorithmAndBatchCountAndMovesTheGenerationPastZero) {
  Image target = image();
  const std::pair<const char*, std::uint32_t> steps[] = {
      {"Least Bytes", 4294967295}, {"Least Queue Depth", 1}, {"Modified Round Robin", 2}};
  for (const auto& [algorithm, generation] : steps) {
    const std::string named = "Algorithm\": \"" + std::string(algorithm) + "\"}";
    EXPECT_EQ(ask(target, R"({"Batch Count": 4294967295, ")" + named), kSuccess);
    const auto published =
        valueFromJSON(readJSON(R"({"Batch Count": 4294967295, "Load Balancing )" + named), Place());
    for (const Image& seen : {target, Image::parse(target.text())}) {
      EXPECT_TRUE(seen.find(kUnit)->properties->equals(*published)) << seen.text();
      EXPECT_EQ(seen.generation(), generation);
    }
  }
}

TEST(Driver, ChangesBitSevenOfThePathsOfThatIdentifierAlone) {
  Image target = image();
  EXPECT_EQ(ask(target, R"({"PathState": {"01AB": 3}})"), kSuccess);
  EXPECT_EQ(stateOf(target, 201), 0x81);
  EXPECT_EQ(ask(target, R"({"PathState": {"01AB": 0}})"), kSuccess);
  EXPECT_EQ(stateOf(target, 201), 0x01);
  EXPECT_EQ(stateOf(target, 202), 0x82);
  EXPECT_EQ(ask(target, R"({"PathState": {"02": 3}})"), kSuccess);
  EXPECT_EQ(stateOf(target, 202), 0x82);
  EXPECT_EQ(stateOf(target, 203), 0x80);
  const Image reread = Image::parse(target.text());
  EXPECT_EQ(stateOf(reread, 203), 0x80);
  EXPECT_EQ(reread.find(203)->statistics->commandsProcessed, 3U);
}

TEST(Driver, RefusesWholeWhatItCannotMakeSenseOf) {
  const char* const bad[] = {
      R"("Least Bytes")",
      R"({})",
      R"({"Algorithm": "Fastest", "Batch Count": 1})",
      R"({"Algorithm": "Least Bytes", "Batch Count": -1})",
      R"({"Algorithm": "Least Bytes", "Batch Count": 4294967296})",
      R"({"Algorithm": "Least Bytes"})",
      R"({"Batch Count": 1})",
      R"({"Algorithm": 4, "Batch Count": 1})",
      R"({"Algorithm": "Least Bytes", "Batch Count": "1"})",
      R"({"Algorithm": "Least Bytes", "Batch Count": 1.5})",
      R"({"Algorithm": "Least Bytes", "Batch Count": 1, "Extra": 1})",
      R"({"PathState": 3})",
      R"({"PathState": {}})",
      R"({"PathState": {"01AB": "3"}})",
      R"({"PathState": {"01AB": 3, "02": 1}})",
      R"({"PathState": {"01AB": 3, "0404": 3}})",
      R"({"PathState": {"01AB": 3, "03": 3}})",
      R"({"PathState": {"01AB": 3}, "Batch Count": 1})",
      R"({"PathState": {"01ab": 3}})",
      R"({"PathState": {"": 3}})",
  };
  Image target = image();
  for (const char* request : bad) EXPECT_EQ(ask(target, request), -536870206) << request;
  EXPECT_EQ(ask(target, kGood, 201), kBadRequest);
  EXPECT_EQ(ask(target, kGood, 999), kBadRequest);
  EXPECT_EQ(ask(target, kGood, kUnit, registry::kBatchCount), kBadRequest);
  EXPECT_EQ(target.text(), image().text());
}

TEST(Driver, PublishesIntoEveryFormOfProperties) {
  for (const char* properties :
       {"", R"(, "properties": {})", R"(, "properties": {"$dictionary": {"$x": 1}})"}) {
    Image target =
        Image::parse(std::string(R"({"generation": 1, "entries": [{"id": 100, "class": )") +
                     R"("KsSCSIMultipathedLogicalUnit")" + properties + "}]}");
    ASSERT_EQ(ask(target, kGood), kSuccess) << properties;
    const Image reread = Image::parse(target.text());
    EXPECT_NE(reread.find(kUnit)->properties->value(registry::kBatchCount), nullptr) << properties;
  }
}

}  // namespace
}  // namespace tavrenix::lab
