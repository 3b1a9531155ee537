#include "tests/cli/fake_library.hpp"

#include <tavrenix/mpio.h>

#include "runtime/c_bridge.hpp"

FakeLibrary fake;

namespace {

const ob::Object* field(const void* handle, std::string_view name) {
  const auto* fields = ob::fromC<ob::Dictionary>(handle);
  return fields == nullptr ? nullptr : fields->value(*ob::String::make(name));
}

template <class CRef>
CRef copyField(const void* handle, std::string_view name) {
  return static_cast<CRef>(ObRetain(ob::toC<ObTypeRef>(field(handle, name))));
}

bool change(const std::string& function, const void* handle, const std::string& argument,
            ObErrorRef* error) {
  fake.calls.push_back(function + " " +
                       std::string(ob::as<ob::String>(field(handle, "name"))->view()) + argument);
  if (fake.answers.empty()) return true;
  const FakeLibrary::Answer answer = fake.answers.front();
  fake.answers.pop_front();
  if (answer.error)
    *error = static_cast<ObErrorRef>(ObRetain(ob::toC<ObTypeRef>(answer.error.get())));
  return answer.done;
}

}  // namespace

extern "C" {

ObArrayRef MPIOCopyLogicalUnits(void) {
  fake.calls.push_back("CopyLogicalUnits");
  return static_cast<ObArrayRef>(ObRetain(ob::toC<ObTypeRef>(fake.units.get())));
}

ObDictionaryRef MPIOLogicalUnitCopyProperties(MPIOLogicalUnitRef unit) {
  return copyField<ObDictionaryRef>(unit, "properties");
}

ObArrayRef MPIOLogicalUnitCopyPaths(MPIOLogicalUnitRef unit) {
  return copyField<ObArrayRef>(unit, "paths");
}

ObDictionaryRef MPIOLogicalUnitPathCopyProperties(MPIOLogicalUnitPathRef path) {
  return copyField<ObDictionaryRef>(path, "properties");
}

bool MPIOLogicalUnitPathEnable(MPIOLogicalUnitPathRef path, ObErrorRef* error) {
  return change("Enable", path, "", error);
}

bool MPIOLogicalUnitPathDisable(MPIOLogicalUnitPathRef path, ObErrorRef* error) {
  return change("Disable", path, "", error);
}

bool MPIOLogicalUnitSetAlgorithm(MPIOLogicalUnitRef unit, ObStringRef algorithm,
                                 ObErrorRef* error) {
  return change("SetAlgorithm", unit, std::string(" ") + ObStringGetUTF8(algorithm), error);
}

bool MPIOLogicalUnitSetBatchCount(MPIOLogicalUnitRef unit, uint32_t newBatchCount,
                                  ObErrorRef* error) {
  return change("SetBatchCount", unit, " " + std::to_string(newBatchCount), error);
}

}  // extern "C"
