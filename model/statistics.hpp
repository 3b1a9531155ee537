// Reads of the driver's counters. Each read asks the driver; nothing is cached.
//
// Thread safety: any thread.
#pragma once

#include "host/tunable.hpp"
#include "model/errors.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// Fills `record`, which has room for `size` bytes, with the driver's answer. Returns 0.
// Errors: prints one line on standard error and returns the result of the tunable. `record` then
// holds what the driver wrote before it failed, if anything.
int readStatistics(MPIOKernelTunable& tunable, const SCSIMPIOStatisticsRequest& request,
                   void* record, std::size_t size);

// The keys of the counters that units and paths have in common. Each kind has keys of its own.
struct CounterKeys {
  const ob::String& samplingDate;
  const ob::String& bytesSent;
  const ob::String& bytesReceived;
  const ob::String& totalBytes;  // the sum of the two, modulo 2 to the power 64
  const ob::String& totalCommands;
};
// Adds the counters, and the date of now, under these keys.
void addCounters(ob::DictionaryBuilder& builder, const CounterKeys& keys,
                 const SCSILogicalUnitStatistics& counters);

}  // namespace tavrenix
