// Reads of the driver's counters, one system call each, nothing cached. Any thread.
#pragma once

#include "model/errors.hpp"
#include "model/tunable.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

// Fills record with what the driver answers. A failure puts one line on standard error and returns
// the call's own non-zero result; record then holds what the driver wrote before it failed, if
// anything.
int readStatistics(MPIOKernelTunable& tunable, const SCSIMPIOStatisticsRequest& request,
                   void* record, std::size_t size);

// The four counters that unit and path statistics share, under the keys that the two kinds give
// them.
struct CounterKeys {
  const ob::String& samplingDate;
  const ob::String& bytesSent;
  const ob::String& bytesReceived;
  const ob::String& totalBytes;  // the sum of the two, modulo 2 to the power 64
  const ob::String& totalCommands;
};
void addCounters(ob::DictionaryBuilder& builder, const CounterKeys& keys,
                 const SCSILogicalUnitStatistics& counters);

}  // namespace tavrenix
