// Every operation of the host fails once, at every position that a client's session calls it from.
#include <gtest/gtest.h>

#include "tests/library/scenario.hpp"

namespace tavrenix::test {
namespace {

TEST(HostFaults, AtEverySiteLeakNothingAndHeal) {
  LibraryHost host;
  addStorage(host->memory, {.units = 2, .paths = 2, .volumes = 1});
  ASSERT_TRUE(useEverything(*host));
  const std::size_t sites = host->watch.failable();
  ASSERT_GT(sites, 100u);
  testing::internal::CaptureStderr();
  for (std::size_t site = 0; site < sites; ++site) {
    SCOPED_TRACE(site);
    host->watch.reset();
    host->watch.failAt(site);
    ASSERT_TRUE(useEverything(*host));
    ASSERT_EQ(host->memory.registry().openHandles(), 0u);
    host->watch.reset();
    touch(host->memory);
    const Handles healed;
    ASSERT_EQ(ObArrayGetCount(healed.units.get()), 2u);
    ASSERT_EQ(ObArrayGetCount(healed.paths(1).get()), 2u);
  }
  testing::internal::GetCapturedStderr();
}

TEST(HostFaults, WhileAUnitIsReadLeaveItsCachedDataInPlace) {
  LibraryHost host;
  addStorage(host->memory, {.units = 1, .paths = 1, .volumes = 2});
  const Handles handles;
  const auto read = [&] {
    return Owned<ObDictionaryRef>(MPIOLogicalUnitCopyProperties(handles.unit()));
  };
  const auto whole = read();
  host->watch.reset();
  read();
  const std::size_t sites = host->watch.failable();
  for (std::size_t site = 0; site < sites; ++site) {
    SCOPED_TRACE(site);
    read();
    host->watch.reset();
    host->watch.failAt(site);
    const auto properties = read();
    for (const ObStringRef key : {kMPIOLogicalUnitIdentifierKey, kMPIOLogicalUnitAliasKey,
                                  kMPIOLogicalUnitVendorIDKey, kMPIOLogicalUnitProductIDKey,
                                  kMPIOLogicalUnitAlgorithmKey, kMPIOLogicalUnitBatchCountKey}) {
      ASSERT_TRUE(ObEqual(ObDictionaryGetValue(properties.get(), key),
                          ObDictionaryGetValue(whole.get(), key)));
    }
    ASSERT_EQ(host->memory.registry().openHandles(), 0u);
  }
}

}  // namespace
}  // namespace tavrenix::test
