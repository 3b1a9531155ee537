#include "lab/driver.hpp"

#include "model/registry_names.hpp"
#include "tests/lab/scratch.hpp"

namespace tavrenix::lab {
namespace {

constexpr EntryID kUnit = 100;

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

KernelStatus ask(Image& target, const ob::Object& request, EntryID entry = kUnit) {
  return actOnWrite(target, entry, registry::kProperties, request);
}

int stateOf(const Image& target, EntryID path) {
  return target.find(path)->statistics->state;
}

TEST(Driver, PublishesAlgorithmAndBatchCountAndMovesTheGenerationPastZero) {
  Image target = image();
  const std::pair<const char*, std::uint32_t> steps[] = {
      {"Least Bytes", 4294967295}, {"Least Queue Depth", 1}, {"Modified Round Robin", 2}};
  for (const auto& [algorithm, generation] : steps) {
    EXPECT_EQ(ask(target, *algorithmRequest(algorithm, 4294967295)), kSuccess);
    const auto published = dictionary(
        {{"Batch Count", number(4294967295)}, {"Load Balancing Algorithm", text(algorithm)}});
    for (const Image& seen : {target, Image::parse(target.text())}) {
      EXPECT_TRUE(seen.find(kUnit)->properties->equals(*published)) << seen.text();
      EXPECT_EQ(seen.generation(), generation);
    }
  }
}

TEST(Driver, ChangesBitSevenOfThePathsOfThatIdentifierAlone) {
  Image target = image();
  EXPECT_EQ(ask(target, *pathRequest("01AB", 3)), kSuccess);
  EXPECT_EQ(stateOf(target, 201), 0x81);
  EXPECT_EQ(ask(target, *pathRequest("01AB", 0)), kSuccess);
  EXPECT_EQ(stateOf(target, 201), 0x01);
  EXPECT_EQ(stateOf(target, 202), 0x82);
  EXPECT_EQ(ask(target, *pathRequest("02", 3)), kSuccess);
  EXPECT_EQ(stateOf(target, 202), 0x82);
  EXPECT_EQ(stateOf(target, 203), 0x80);
  const Image reread = Image::parse(target.text());
  EXPECT_EQ(stateOf(reread, 203), 0x80);
  EXPECT_EQ(reread.find(203)->statistics->commandsProcessed, 3U);
}

TEST(Driver, RefusesWholeWhatItCannotMakeSenseOf) {
  const ob::Ref<const ob::Object> kBad[] = {
      text("Least Bytes"),
      dictionary({}),
      algorithmRequest("Fastest", 1),
      algorithmRequest("Least Bytes", -1),
      algorithmRequest("Least Bytes", 4294967296),
      dictionary({{"Algorithm", text("Least Bytes")}}),
      dictionary({{"Batch Count", number(1)}}),
      dictionary({{"Algorithm", number(4)}, {"Batch Count", number(1)}}),
      dictionary({{"Algorithm", text("Least Bytes")}, {"Batch Count", text("1")}}),
      dictionary({{"Algorithm", text("Least Bytes")}, {"Batch Count", ob::Number::make(1.5)}}),
      dictionary(
          {{"Algorithm", text("Least Bytes")}, {"Batch Count", number(1)}, {"Extra", number(1)}}),
      dictionary({{"PathState", number(3)}}),
      dictionary({{"PathState", dictionary({})}}),
      dictionary({{"PathState", dictionary({{"01AB", text("3")}})}}),
      dictionary({{"PathState", dictionary({{"01AB", number(3)}, {"02", number(1)}})}}),
      dictionary({{"PathState", dictionary({{"01AB", number(3)}, {"0404", number(3)}})}}),
      dictionary({{"PathState", dictionary({{"01AB", number(3)}, {"03", number(3)}})}}),
      dictionary({{"PathState", dictionary({{"01AB", number(3)}})}, {"Batch Count", number(1)}}),
      pathRequest("01ab", 3),
      pathRequest("", 3),
  };
  Image target = image();
  for (std::size_t row = 0; row < std::size(kBad); ++row)
    EXPECT_EQ(ask(target, *kBad[row]), -536870206) << row;
  const auto good = algorithmRequest("Least Bytes", 1);
  for (const EntryID other : {EntryID{201}, EntryID{999}})
    EXPECT_EQ(ask(target, *good, other), kBadRequest);
  EXPECT_EQ(actOnWrite(target, kUnit, registry::kBatchCount, *good), kBadRequest);
  EXPECT_EQ(target.text(), image().text());
}

TEST(Driver, PublishesIntoEveryFormOfProperties) {
  for (const char* properties :
       {"", R"(, "properties": {})", R"(, "properties": {"$dictionary": {"$x": 1}})"}) {
    Image target =
        Image::parse(std::string(R"({"generation": 1, "entries": [{"id": 100, "class": )") +
                     R"("KsSCSIMultipathedLogicalUnit")" + properties + "}]}");
    ASSERT_EQ(ask(target, *algorithmRequest("Least Bytes", 1)), kSuccess) << properties;
    const Image reread = Image::parse(target.text());
    EXPECT_NE(reread.find(kUnit)->properties->value(registry::kBatchCount), nullptr) << properties;
  }
}

}  // namespace
}  // namespace tavrenix::lab
