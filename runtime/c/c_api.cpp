// The C face of objects, arrays, dictionaries, errors and pools.
#include <tavrenix/ob.h>

#include <new>

#include "runtime/c/c_bridge.hpp"
#include "runtime/collections.hpp"
#include "runtime/exhaustion.hpp"
#include "runtime/pool.hpp"

using ob::catchExhaustion;
using ob::fromC;
using ob::toC;

struct ObPool {
  ob::Pool pool;
};

extern "C" {

ObTypeRef ObRetain(ObTypeRef object) {
  if (const ob::Object* held = fromC<ob::Object>(object)) held->retain();
  return object;
}

void ObRelease(ObTypeRef object) {
  if (const ob::Object* held = fromC<ob::Object>(object)) held->release();
}

ObTypeID ObGetTypeID(ObTypeRef object) {
  const ob::Object* known = fromC<ob::Object>(object);
  return known == nullptr ? static_cast<ObTypeID>(ob::kNoType) : known->typeID();
}

bool ObEqual(ObTypeRef a, ObTypeRef b) {
  const ob::Object* first = fromC<ob::Object>(a);
  const ob::Object* second = fromC<ob::Object>(b);
  if (first == nullptr || second == nullptr) return first == second;
  return first->equals(*second);
}

ObTypeID ObArrayGetTypeID(void) {
  return ob::kArrayType;
}

size_t ObArrayGetCount(ObArrayRef array) {
  const auto* known = fromC<ob::Array>(array);
  return known == nullptr ? 0 : known->values().size();
}

ObTypeRef ObArrayGetValueAtIndex(ObArrayRef array, size_t index) {
  const auto* known = fromC<ob::Array>(array);
  if (known == nullptr || index >= known->values().size()) return nullptr;
  return known->values()[index].get();
}

void ObArrayApplyFunction(ObArrayRef array, ObArrayApplier apply, void* context) {
  const auto* known = fromC<ob::Array>(array);
  if (known == nullptr) return;
  for (const auto& value : known->values()) apply(value.get(), context);
}

ObTypeID ObDictionaryGetTypeID(void) {
  return ob::kDictionaryType;
}

size_t ObDictionaryGetCount(ObDictionaryRef dictionary) {
  const auto* known = fromC<ob::Dictionary>(dictionary);
  return known == nullptr ? 0 : known->pairs().size();
}

ObTypeRef ObDictionaryGetValue(ObDictionaryRef dictionary, ObStringRef key) {
  const auto* known = fromC<ob::Dictionary>(dictionary);
  const auto* text = fromC<ob::String>(key);
  return known == nullptr || text == nullptr ? nullptr : known->value(*text);
}

void ObDictionaryApplyFunction(ObDictionaryRef dictionary, ObDictionaryApplier apply,
                               void* context) {
  const auto* known = fromC<ob::Dictionary>(dictionary);
  if (known == nullptr) return;
  for (const auto& [key, value] : known->pairs())
    apply(toC<ObStringRef>(key.get()), value.get(), context);
}

ObTypeID ObErrorGetTypeID(void) {
  return ob::kErrorType;
}

ObStringRef ObErrorGetDomain(ObErrorRef error) {
  const auto* known = fromC<ob::Error>(error);
  return known == nullptr ? nullptr : toC<ObStringRef>(&known->domain());
}

int64_t ObErrorGetCode(ObErrorRef error) {
  const auto* known = fromC<ob::Error>(error);
  return known == nullptr ? 0 : known->code();
}

ObDictionaryRef ObErrorGetUserInfo(ObErrorRef error) {
  const auto* known = fromC<ob::Error>(error);
  return known == nullptr ? nullptr : toC<ObDictionaryRef>(known->userInfo());
}

ObStringRef ObErrorCopyDescription(ObErrorRef error) {
  const auto* known = fromC<ob::Error>(error);
  if (known == nullptr) return nullptr;
  return catchExhaustion<ObStringRef>(
      nullptr, [&] { return toC<ObStringRef>(known->description().detach()); });
}

ObPoolRef ObPoolCreate(void) {
  return new (std::nothrow) ObPool;
}

void ObPoolDrain(ObPoolRef pool) {
  delete pool;
}

}  // extern "C"
