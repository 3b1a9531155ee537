// The C face of every kind of object: what it tells of one, and of none.
#include <gtest/gtest.h>
#include <poll.h>
#include <tavrenix/ob.h>

#include <set>
#include <string>

#include "runtime/c_bridge.hpp"
#include "runtime/error.hpp"
#include "runtime/pool.hpp"
#include "runtime/values.hpp"

namespace {

constexpr std::uint8_t kBytes[] = {0x0A, 0xFF};

TEST(CFace, TellsEveryKindApart) {
  const auto string = ob::String::make("text");
  const auto number = ob::Number::make(std::int64_t{4});
  const auto data = ob::Data::make(kBytes);
  const auto date = ob::Date::now();
  const auto array = ob::Array::make({number});
  const auto dictionary = ob::Dictionary::make({});
  const auto error = ob::make<ob::Error>(string, 1, nullptr);
  const ObRunLoopSourceContext nothing{};
  const ObRunLoopSourceRef source = ObRunLoopSourceCreate(&nothing);
  const ObDispatchQueueRef queue = ObDispatchQueueCreate(nullptr);
  const std::pair<ObTypeRef, ObTypeID> kinds[] = {
      {string.get(), ObStringGetTypeID()},
      {number.get(), ObNumberGetTypeID()},
      {kObBooleanTrue, ObBooleanGetTypeID()},
      {data.get(), ObDataGetTypeID()},
      {date.get(), ObDateGetTypeID()},
      {array.get(), ObArrayGetTypeID()},
      {dictionary.get(), ObDictionaryGetTypeID()},
      {error.get(), ObErrorGetTypeID()},
      {ObRunLoopGetCurrent(), ObRunLoopGetTypeID()},
      {source, ObRunLoopSourceGetTypeID()},
      {queue, ObDispatchQueueGetTypeID()},
  };
  std::set<ObTypeID> seen{0};
  for (const auto& [object, kind] : kinds) {
    EXPECT_EQ(ObGetTypeID(object), kind);
    EXPECT_TRUE(seen.insert(kind).second) << kind;
  }
  ObRelease(source);
  ObRelease(queue);
}

TEST(CFace, GivesNumbersAsDoublesAndDataAsBytes) {
  double value = -1;
  EXPECT_FALSE(ObNumberGetDouble(nullptr, &value));
  EXPECT_EQ(value, -1);
  const auto largest = ob::Number::make(UINT64_MAX);
  EXPECT_TRUE(ObNumberGetDouble(ob::toC<ObNumberRef>(largest.get()), &value));
  EXPECT_EQ(value, 18446744073709551616.0);  // the nearest one

  EXPECT_EQ(ObDataGetBytes(nullptr), nullptr);
  const auto data = ob::Data::make(kBytes);
  const auto ref = ob::toC<ObDataRef>(data.get());
  ASSERT_EQ(ObDataGetLength(ref), 2u);
  EXPECT_EQ(ObDataGetBytes(ref)[0], 0x0A);
  EXPECT_EQ(ObDataGetBytes(ref)[1], 0xFF);
}

TEST(CFace, WalksADictionaryInTheOrderOfItsFilling) {
  ob::DictionaryBuilder builder(2);
  builder.add(*ob::String::make("second"), ob::String::make("2"));
  builder.add(*ob::String::make("first"), ob::String::make("1"));
  const auto dictionary = builder.build();
  std::string walked;
  const ObDictionaryApplier apply = [](ObStringRef key, ObTypeRef value, void* context) {
    *static_cast<std::string*>(context) += std::string(ObStringGetUTF8(key)) + "=" +
                                           ObStringGetUTF8(static_cast<ObStringRef>(value)) + " ";
  };
  ObDictionaryApplyFunction(nullptr, apply, &walked);
  EXPECT_EQ(walked, "");
  ObDictionaryApplyFunction(ob::toC<ObDictionaryRef>(dictionary.get()), apply, &walked);
  EXPECT_EQ(walked, "second=2 first=1 ");
}

TEST(CFace, APoolHoldsWhatIsPutThereUntilItIsDrained) {
  const auto string = ob::String::make("kept");
  ObPoolDrain(nullptr);
  const ObPoolRef pool = ObPoolCreate();
  ob::Pool::keep(string);
  EXPECT_EQ(string->retainCount(), 2u);
  ObPoolDrain(pool);
  EXPECT_EQ(string->retainCount(), 1u);
}

TEST(CFace, AWakeUpShowsAtTheDescriptor) {
  ObRunLoopWakeUp(nullptr);
  const ObRunLoopRef loop = ObRunLoopGetCurrent();
  while (ObRunLoopPerformDue(kObRunLoopDefaultMode)) continue;
  pollfd waited{ObRunLoopGetDescriptor(loop), POLLIN, 0};
  EXPECT_EQ(::poll(&waited, 1, 0), 0);
  ObRunLoopWakeUp(loop);
  EXPECT_EQ(::poll(&waited, 1, 0), 1);
  EXPECT_FALSE(ObRunLoopPerformDue(kObRunLoopDefaultMode));  // which takes note of it
  EXPECT_EQ(::poll(&waited, 1, 0), 0);
}

}  // namespace
