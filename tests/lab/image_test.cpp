#include "lab/image.hpp"

#include "tests/lab/scratch.hpp"
#include "tests/support/storage.hpp"

namespace tavrenix::lab {
namespace {

std::string refusalOf(std::string_view text) {
  try {
    Image::parse(text);
  } catch (const ImageError& error) {
    return error.what();
  }
  return "no refusal";
}

std::string withEntries(const std::string& entries) {
  return R"({"generation": 1, "entries": [)" + entries + "]}";
}

std::string withClasses(const std::string& classes) {
  return R"({"generation": 1, "entries": [], "classes": )" + classes + "}";
}

std::string withEntry(const std::string& className, const std::string& members) {
  return withEntries(R"({"id": 1, "class": ")" + className + "\", " + members + "}");
}

std::string withProperty(const std::string& value) {
  return withEntry("C", R"("properties": {"P": )" + value + "}");
}

TEST(BadImage, IsRefusedWithPlaceAndFault) {
  std::ifstream table(TAVRENIX_TESTS "lab/bad_images.txt");
  std::size_t cases = 0;
  for (std::string form; table >> form;) {
    std::string text;
    std::string refusal;
    std::getline(table, text);
    if (form == "#") continue;
    std::getline(table, refusal);
    const std::string image = form == "image"     ? text
                              : form == "classes" ? withClasses(text)
                              : form == "entries" ? withEntries(text)
                              : form == "entry"   ? withEntry("C", text)
                              : form == "path"    ? withEntry("KsSCSIHierarchicalLogicalUnit", text)
                                                  : withProperty(text);
    EXPECT_EQ(refusalOf(image), refusal) << image;
    ++cases;
  }
  EXPECT_GT(cases, 40U);
}

// The words behind the place are the JSON library's.
void expectSyntaxError(const std::string& text, std::string_view place) {
  const std::string refusal = refusalOf(text);
  EXPECT_TRUE(refusal.starts_with(place)) << text << "\n" << refusal;
  EXPECT_EQ(refusal.find_first_of("\n\r\x1b"), std::string::npos) << refusal;
  EXPECT_LT(refusal.size(), 250U);
}

TEST(BadImage, SyntaxErrorsNameLineAndColumn) {
  expectSyntaxError("", "line 1, column 1: ");
  expectSyntaxError("{\"generation\": 1,\n  \"entries\": [}", "line 2, column 15: ");
  expectSyntaxError("{\n\"\xC3\xA9\": x}", "line 2, column 6: ");
  expectSyntaxError("{\"a\": \"\xFF\"}", "line 1, column 8: ");
  expectSyntaxError("{\"a\": \"\x1b[31m\"}", "line 1, column 8: ");
  expectSyntaxError("{} {}", "line 1, column 4: ");
  expectSyntaxError("{\"a\": 1e999}", "line 1, column 11: ");
  expectSyntaxError(withEntries("") + '\0' + "more", "line 1, column 33: ");
  expectSyntaxError("{\"a\": \"" + std::string(100'000, 'x'), "line 1, column 100008: ");
}

TEST(BadImage, ChainsOfClassesEndAt64) {
  std::string chain = R"("C64": "C65")";
  for (int i = 64; i > 1; --i) {
    const std::string below = std::to_string(i - 1);
    chain += ", \"C" + below + "\": \"C" + std::to_string(i) + '"';
  }
  EXPECT_EQ(refusalOf(withClasses("{" + chain + "}")), "no refusal");
  EXPECT_EQ(refusalOf(withClasses("{" + chain + R"(, "C0": "C1"})")),
            "classes.C0: the class has more than 64 classes above it");
}

TEST(BadImage, NestingBelow64) {
  // The document, "entries", the entry and "properties" are four levels.
  const auto nested = [](std::size_t depth) {
    return withProperty(std::string(depth, '[') + std::string(depth, ']'));
  };
  EXPECT_EQ(refusalOf(nested(60)), "no refusal");
  EXPECT_TRUE(refusalOf(nested(61)).ends_with("[0]: the nesting is deeper than 64"));
  EXPECT_TRUE(refusalOf(std::string(1'000'000, '[')).ends_with("the nesting is deeper than 64"));
}

TEST(Image, ReadsEveryKindOfValue) {
  const Image image =
      Image::parse(withEntries(R"({"id": 18446744073709551615, "class": "C", "properties": {
    "s": "\u00e9", "i": -9223372036854775808, "u": 18446744073709551615, "d": 1.0, "b": false,
    "a": [1], "x": {"$data": "00fF"}, "t": {"$date": "1970-01-01T00:00:01Z"}, "n": {"$dictionary": {"$data": 1}}}})"));
  ASSERT_NE(image.find(0xFFFFFFFFFFFFFFFF), nullptr);
  const auto wanted = test::dictionary({{"s", test::text("\xC3\xA9")},
                                        {"i", ob::Number::make(INT64_MIN)},
                                        {"u", ob::Number::make(UINT64_MAX)},
                                        {"d", ob::Number::make(1.0)},
                                        {"b", test::flag(false)},
                                        {"a", ob::Array::make({test::number(1)})},
                                        {"x", test::data({0x00, 0xFF})},
                                        {"t", ob::Date::make(1'000'000'000)},
                                        {"n", test::dictionary({{"$data", test::number(1)}})}});
  EXPECT_TRUE(image.find(0xFFFFFFFFFFFFFFFF)->properties->equals(*wanted));
}

TEST(Image, OrdersParentsFirstAndOtherwiseAsTheFile) {
  const Image image = Image::parse(withEntries(
      R"({"id": 9, "class": "C", "parents": [7, 8]}, {"id": 3, "class": "C"},
         {"id": 7, "class": "C"}, {"id": 8, "class": "C", "parents": [3]}, {"id": 1, "class": "C"})"));
  EXPECT_EQ(image.parentsFirst(), (std::vector<std::size_t>{2, 1, 3, 0, 4}));
}

TEST(Image, TakesALongChainOfParentsAndAWideObject) {
  std::string entries = R"({"id": 0, "class": "C"})";
  std::string members = "\"k\": 0";
  for (int i = 1; i < 50'000; ++i) {
    const std::string id = std::to_string(i);
    entries +=
        R"(,{"id": )" + id + R"(, "class": "C", "parents": [)" + std::to_string(i - 1) + "]}";
    members += ", \"k" + id + "\": 0";
  }
  EXPECT_EQ(Image::parse(withEntries(entries)).parentsFirst().back(), 49'999U);
  EXPECT_EQ(Image::parse(withProperty("{" + members + "}")).entries().size(), 1U);
}

TEST(Image, TextGivesTheSameDocumentBack) {
  for (const char* name : {"small.json", "oddities.json"}) {
    const std::string file = contentsOf(std::string(TAVRENIX_SAMPLES) + name);
    const std::string text = Image::parse(file).text();
    EXPECT_EQ(readJSON(text), readJSON(file)) << name;
    EXPECT_EQ(Image::parse(text).text(), text) << name;
  }
}

TEST(Image, TextIsForAPerson) {
  const Json document = readJSON(R"({"z":1,"a":[1.0,"\u00e9\u0007",-0.5,1e300,true],"e":{},
    "list":[{"first":"0123456789012345678901234567890123456789"},{"second":"012345678901234567890123456789012"}]})");
  EXPECT_EQ(printJSON(document), R"({
  "z": 1,
  "a": [1.0, "é\u0007", -0.5, 1e+300, true],
  "e": {},
  "list": [
    {"first": "0123456789012345678901234567890123456789"},
    {"second": "012345678901234567890123456789012"}
  ]
}
)");
}

TEST(Image, TextFillsALineUpTo100Columns) {
  // Around the letters stand two blanks, "key": [""] and the comma; each takes two bytes.
  for (const std::size_t letters : {86U, 87U}) {
    std::string text;
    while (text.size() < 2 * letters) text += "\xC3\xA9";
    const Json document = {{"key", Json::array({text})}, {"other", std::string(90, 'x')}};
    EXPECT_EQ(printJSON(document).find("[\n") != std::string::npos, letters == 87);
  }
}

}  // namespace
}  // namespace tavrenix::lab
