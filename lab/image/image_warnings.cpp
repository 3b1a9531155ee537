#include "lab/image/image_warnings.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/registry_names.hpp"

namespace tavrenix::lab {

namespace {

// The kinds of entries, one bit each. An entry has several bits if its class derives from several
// of the classes of units, paths and media.
using Kinds = unsigned;
constexpr Kinds kUnit = 1;
constexpr Kinds kPath = 2;
constexpr Kinds kMedium = 4;
constexpr Kinds kOther = 8;

enum class Form { kString, kData, kNumber, kTruth, kAlgorithm, kDictionary };

struct KnownProperty {
  const ob::String& name;
  Kinds kinds;  // the entries on which it has an effect
  Form form;
  const ob::String* member = nullptr;  // the key that counts inside a dictionary
  Form memberForm = Form::kString;
};

const KnownProperty kProperties[] = {
    {registry::kUniqueIdentifier, kUnit, Form::kData},
    {registry::kAlias, kUnit, Form::kString},
    {registry::kLoadBalancingAlgorithm, kUnit, Form::kAlgorithm},
    {registry::kPeripheralDeviceType, kUnit, Form::kNumber},
    {registry::kBatchCount, kUnit, Form::kNumber},
    {registry::kVendor, kUnit | kPath, Form::kString},
    {registry::kProduct, kUnit | kPath, Form::kString},
    {registry::kPathIdentifier, kPath, Form::kData},
    {registry::kProtocolCharacteristics, kPath, Form::kDictionary, &registry::kPhysicalInterconnect,
     Form::kString},
    {registry::kControllerCharacteristics, kPath | kOther, Form::kDictionary,
     &registry::kSCSIPortIdentifier, Form::kData},
    {registry::kLeaf, kMedium, Form::kTruth},
    {registry::kContent, kMedium, Form::kString},
};

const KnownProperty* knownProperty(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(kProperties), std::end(kProperties),
                   [&](const KnownProperty& known) { return known.name.view() == name; });
  return found == std::end(kProperties) ? nullptr : found;
}

bool isAlgorithm(const ob::String* word) {
  const ob::String* const words[] = {&registry::kModifiedRoundRobin, &registry::kLeastQueueDepth,
                                     &registry::kLeastBytes};
  return word != nullptr && std::any_of(std::begin(words), std::end(words), [&](const auto* each) {
           return each->view() == word->view();
         });
}

// Returns in words what the value should be, or an empty text if it has the form.
std::string_view expectedForm(const ob::Object& value, Form form) {
  switch (form) {
    case Form::kString:
      return ob::as<ob::String>(&value) ? "" : "a string";
    case Form::kData:
      return ob::as<ob::Data>(&value) ? "" : "data such as {\"$data\": \"00FF\"}";
    case Form::kNumber:
      return ob::as<ob::Number>(&value) ? "" : "a number";
    case Form::kTruth:
      return ob::as<ob::Boolean>(&value) || ob::as<ob::Number>(&value) ? "" : "true or false";
    case Form::kAlgorithm:
      return isAlgorithm(ob::as<ob::String>(&value))
                 ? ""
                 : R"("Modified Round Robin", "Least Queue Depth" or "Least Bytes")";
    case Form::kDictionary:
      return ob::as<ob::Dictionary>(&value) ? "" : "a dictionary";
  }
  return "";
}

class WarningList {
 public:
  explicit WarningList(const Image& image) : classes_(image.classes()) {}

  void lookAt(const ImageEntry& entry, const Place& place) {
    const Kinds kinds = kindsOf(entry);
    classIsWarnedOf_ = false;
    for (const auto& [name, value] : entry.properties->pairs()) {
      lookAtProperty(name->view(), *value, kinds, place);
    }
    if (entry.statistics) expectEffect("statistics", kinds, kUnit | kPath, place, place);
    if (entry.details) expectEffect("details", kinds, kUnit | kPath, place, place);
    if (!entry.disk) return;
    expectEffect("disk", kinds, kMedium, place, place);
    const Place disk = place.at("disk");
    const auto* size = entry.disk->mediaSize.get();
    if (size != nullptr && size->asDouble() < 0) {
      add(disk.at("mediaSize"), "a size should not be negative");
    }
  }

  std::vector<std::string> take() {
    if (count_ > kMostWarnings) {
      lines_.push_back("and " + std::to_string(count_ - kMostWarnings) + " more of this sort");
    }
    return std::move(lines_);
  }

 private:
  Kinds kindsOf(const ImageEntry& entry) const {
    const auto bit = [&](std::string_view className, Kinds kind) {
      return classes_.conforms(entry.className, className) ? kind : 0;
    };
    const Kinds kinds = bit(registry::kLogicalUnitClass, kUnit) | bit(registry::kPathClass, kPath) |
                        bit(registry::kMediaClass, kMedium);
    return kinds == 0 ? kOther : kinds;
  }

  void lookAtProperty(std::string_view name, const ob::Object& value, Kinds kinds,
                      const Place& place) {
    const Place properties = place.at("properties");
    const Place itsPlace = properties.at(name);
    const KnownProperty* known = knownProperty(name);
    if (known == nullptr) {
      // An entry of another kind, such as a port, may have any properties.
      if ((kinds & kOther) == 0) add(itsPlace, "unknown property");
      return;
    }
    expectEffect(name, kinds, known->kinds, place, properties);
    expectForm(value, known->form, itsPlace);
    const auto* dictionary = ob::as<ob::Dictionary>(&value);
    if (known->member == nullptr || dictionary == nullptr) return;
    const std::string_view member = known->member->view();
    if (const ob::Object* inside = dictionary->value(*known->member)) {
      expectForm(*inside, known->memberForm, itsPlace.at(member));
    } else {
      add(itsPlace, "should have the key \"" + std::string(member) + '"');
    }
  }

  void expectForm(const ob::Object& value, Form form, const Place& place) {
    const std::string_view expected = expectedForm(value, form);
    if (!expected.empty()) add(place, "should be " + std::string(expected));
  }

  // Adds a warning if the key `name` has no effect in an entry of these kinds. `holder` is the
  // place that has the key: the entry or its properties.
  void expectEffect(std::string_view name, Kinds kinds, Kinds wanted, const Place& entry,
                    const Place& holder) {
    if ((kinds & wanted) != 0) return;
    if (kinds != kOther) return add(holder.at(name), "has no effect in an entry of this class");
    if (std::exchange(classIsWarnedOf_, true)) return;
    add(entry.at("class"), "the class is not that of a unit, a path or a medium, so \"" +
                               std::string(name) + "\" has no effect");
  }

  void add(const Place& place, const std::string& fault) {
    if (++count_ <= kMostWarnings) lines_.push_back(place.text() + ": " + fault);
  }

  const Classes& classes_;
  std::vector<std::string> lines_;
  std::size_t count_ = 0;
  bool classIsWarnedOf_ = false;  // a warning about the class of the current entry has been added
};

}  // namespace

std::vector<std::string> warningsAbout(const Image& image, std::string_view text) {
  WarningList warnings(image);
  const Place top(text);
  const Place entries = top.at("entries");
  for (std::size_t i = 0; i < image.entries().size(); ++i) {
    warnings.lookAt(image.entries()[i], entries.at(i));
  }
  return warnings.take();
}

}  // namespace tavrenix::lab
