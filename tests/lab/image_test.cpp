#include "lab/image.hpp"

#include "tests/lab/scratch.hpp"

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

// One entry 1 of a class without meaning, with the property "P".
std::string withProperty(const std::string& value) {
  return withEntries(R"({"id": 1, "class": "C", "properties": {"P": )" + value + "}}");
}

struct Bad {
  std::string text;
  std::string refusal;
};

void expectRefusals(std::initializer_list<Bad> table) {
  for (const auto& [text, refusal] : table) EXPECT_EQ(refusalOf(text), refusal) << text;
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

TEST(BadImage, TopLevel) {
  expectRefusals({
      {"[]", "top level: must be an object, not an array"},
      {"{}", "top level: the key \"generation\" is missing"},
      {R"({"generation": 1, "entries": {}})", "entries: must be an array, not an object"},
      {R"({"generation": -1, "entries": []})",
       "generation: must be an integer from 0 to 4294967295, not -1"},
      {R"({"generation": 1.5, "entries": []})",
       "generation: must be an integer from 0 to 4294967295, not 1.5"},
      {R"({"generation": 1, "entries": [], "effectiveUser": "0"})",
       "effectiveUser: must be an integer from 0 to 4294967295, not a string"},
      {R"({"generation": 1, "entries": [], "writeStatuses": [0, 2147483648]})",
       "writeStatuses[1]: must be an integer from -2147483648 to 2147483647, not 2147483648"},
      {R"({"generation": 1, "entries": [], "colour": 1})", "colour: unknown key"},
      {R"({"generation": 1, "entries": [], "two words": 1})", R"(["two words"]: unknown key)"},
      {"{\"generation\": 1, \"entries\": [], \"\\u001b[31m\": 1}", R"(["\x1B[31m"]: unknown key)"},
      {R"({"generation": 1, "generation": 2, "entries": []})", "generation: the key stands twice"},
  });
}

TEST(BadImage, Classes) {
  const auto withClasses = [](const std::string& classes) {
    return R"({"generation": 1, "entries": [], "classes": )" + classes + "}";
  };
  expectRefusals({
      {withClasses("[]"), "classes: must be an object, not an array"},
      {withClasses(R"({"A": 1})"), "classes.A: must be a string, not a number"},
      {withClasses(R"({"A": "A"})"), "classes.A: the class derives from itself"},
      {withClasses(R"({"X": "A", "A": "B", "B": "C", "C": "A"})"),
       "classes.X: the class derives from itself"},
      {withClasses(R"({"KsService": "A"})"),
       "classes.KsService: the root of all classes has no base"},
  });
  std::string chain = R"("C64": "C65")";
  for (int i = 64; i > 1; --i) {
    const std::string below = std::to_string(i - 1);
    chain += ", \"C" + below + "\": \"C" + std::to_string(i) + '"';
  }
  EXPECT_EQ(refusalOf(withClasses("{" + chain + "}")), "no refusal");
  EXPECT_EQ(refusalOf(withClasses("{" + chain + R"(, "C0": "C1"})")),
            "classes.C0: the class has more than 64 classes above it");
}

TEST(BadImage, Entries) {
  const std::string path = R"({"id": 1, "class": "KsSCSIHierarchicalLogicalUnit", "statistics": )";
  const std::string plain = R"({"id": 1, "class": "C", )";
  expectRefusals({
      {withEntries("7"), "entries[0]: must be an object, not a number"},
      {withEntries(R"({"id": 1})"), "entries[0]: the key \"class\" is missing"},
      {withEntries(R"({"id": 18446744073709551616, "class": "C"})"),
       "entries[0].id: the number 18446744073709551616 is out of range"},
      {withEntries(R"({"id": 1, "class": null})"), "entries[0].class: must be a string, not null"},
      {withEntries(R"({"id": 1, "class": "C"}, {"id": 1, "class": "C"})"),
       "entries[1].id: the entry ID 1 is that of entries[0] already"},
      {withEntries(plain + R"("name": 1})"), "entries[0].name: unknown key"},
      {withEntries(plain + R"("parents": 2})"),
       "entries[0].parents: must be an array, not a number"},
      {withEntries(plain + R"("parents": [2]})"), "entries[0].parents[0]: there is no entry 2"},
      {withEntries(plain + R"("parents": [1]})"),
       "entries[0].parents[0]: the entry is its own ancestor"},
      {withEntries(R"({"id": 1, "class": "C"}, {"id": 2, "class": "C", "parents": [1, 3]},)"
                   R"({"id": 3, "class": "C", "parents": [2]})"),
       "entries[2].parents[0]: the entry is its own ancestor"},
      {withEntries(plain + R"("parents": [2, 2]}, {"id": 2, "class": "C"})"),
       "entries[0].parents[1]: entry 2 stands twice"},
      {withEntries(plain + R"("properties": 5})"), "entries[0].properties: must be a dictionary"},
      {withEntries(path + R"({"sent": 1, "received": 2, "commands": 3}})"),
       "entries[0].statistics: the key \"state\" is missing"},
      {withEntries(path + R"({"sent": 1, "received": 2, "commands": 3, "state": 256}})"),
       "entries[0].statistics.state: must be an integer from 0 to 255, not 256"},
      {withEntries(plain +
                   R"("statistics": {"sent": 1, "received": 2, "commands": 3, "state": 0}})"),
       "entries[0].statistics.state: unknown key"},
      {withEntries(plain + R"("disk": {"name": "x"}})"), "entries[0].disk.name: unknown key"},
      {withEntries(plain + R"("disk": {"mediaSize": "1"}})"),
       "entries[0].disk.mediaSize: must be a number, not a string"},
  });
}

TEST(BadImage, PropertyValues) {
  const std::string dollarKey =
      "a key that begins with \"$\" stands only inside {\"$dictionary\": {...}}";
  expectRefusals({
      {withProperty("[1, null]"), "entries[0].properties.P[1]: null is no property-list value"},
      {withProperty("-9223372036854775809"),
       "entries[0].properties.P: the number -9223372036854775809 is out of range"},
      {withProperty(R"({"$data": "0"})"),
       "entries[0].properties.P.$data: must be pairs of hexadecimal digits"},
      {withProperty(R"({"$date": "today"})"),
       "entries[0].properties.P.$date: must be a date such as 2026-01-02T03:04:05Z, from 1678 to "
       "2261"},
      {withProperty(R"({"$data": "00", "x": 1})"), "entries[0].properties.P.$data: " + dollarKey},
      {withProperty(R"({"$other": 1})"), "entries[0].properties.P.$other: " + dollarKey},
      {withProperty(R"({"a": 1, "b": 2, "a": 3})"),
       "entries[0].properties.P.a: the key stands twice"},
  });
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
  const std::uint8_t bytes[] = {0x00, 0xFF};
  const auto wanted = dictionary({{"s", string("\xC3\xA9")},
                                  {"i", ob::Number::make(INT64_MIN)},
                                  {"u", ob::Number::make(UINT64_MAX)},
                                  {"d", ob::Number::make(1.0)},
                                  {"b", ob::Ref<const ob::Object>::retain(ob::Boolean::of(false))},
                                  {"a", ob::Array::make({number(1)})},
                                  {"x", ob::Data::make(bytes)},
                                  {"t", ob::Date::make(1'000'000'000)},
                                  {"n", dictionary({{"$data", number(1)}})}});
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
  const auto printed = [](std::size_t letters) {
    std::string text;
    for (std::size_t i = 0; i < letters; ++i) text += "\xC3\xA9";
    return printJSON(Json{{"key", Json::array({text})}, {"other", std::string(90, 'x')}});
  };
  // Around the letters stand two blanks, "key": [""] and the comma.
  EXPECT_EQ(printed(86).find("[\n"), std::string::npos);
  EXPECT_NE(printed(87).find("\"key\": [\n    \""), std::string::npos);
}

}  // namespace
}  // namespace tavrenix::lab
