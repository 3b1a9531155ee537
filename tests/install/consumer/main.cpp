// A client in C++: the disabled paths, by means of a lambda as a block.
#include <tavrenix/mpio.h>

#include <cstdio>
#include <tavrenix/block.hpp>

struct Visit {
  bool (*invoke)(Visit* self, ObDictionaryRef properties);
};

static void visitPaths(MPIOLogicalUnitRef unit, Visit* visit) {
  const ObArrayRef paths = MPIOLogicalUnitCopyPaths(unit);
  bool more = true;
  for (size_t i = 0; more && i < ObArrayGetCount(paths); ++i) {
    const auto path = static_cast<MPIOLogicalUnitPathRef>(ObArrayGetValueAtIndex(paths, i));
    const ObDictionaryRef properties = MPIOLogicalUnitPathCopyProperties(path);
    more = visit->invoke(visit, properties);
    ObRelease(properties);
  }
  ObRelease(paths);
}

int main() {
  int disabled = 0;
  auto countDisabled = tavrenix::makeBlock<Visit>([&](ObDictionaryRef properties) {
    const ObTypeRef enabled = ObDictionaryGetValue(properties, kMPIOLogicalUnitPathEnabledKey);
    if (enabled == kObBooleanFalse) ++disabled;
    return true;
  });
  const ObArrayRef units = MPIOCopyLogicalUnits();
  for (size_t i = 0; i < ObArrayGetCount(units); ++i) {
    visitPaths(static_cast<MPIOLogicalUnitRef>(ObArrayGetValueAtIndex(units, i)), &countDisabled);
  }
  std::printf("%zu units, %d disabled paths\n", ObArrayGetCount(units), disabled);
  ObRelease(units);
}
