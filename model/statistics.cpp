#include "model/statistics.hpp"

#include <cstdio>

namespace tavrenix {

int readStatistics(MPIOKernelTunable& tunable, const SCSIMPIOStatisticsRequest& request,
                   void* record, std::size_t size) {
  const int result =
      tunable.sysctlbyname(kStatisticsTunable, record, &size, &request, sizeof request);
  if (result != 0) std::fprintf(stderr, "sysctlbyname failed to get stats block: %d\n", result);
  return result;
}

void addCounters(ob::DictionaryBuilder& builder, const CounterKeys& keys,
                 const SCSILogicalUnitStatistics& counters) {
  builder.add(keys.samplingDate, ob::Date::now());
  builder.add(keys.bytesSent, ob::Number::make(counters.bytesSent));
  builder.add(keys.bytesReceived, ob::Number::make(counters.bytesReceived));
  builder.add(keys.totalBytes, ob::Number::make(counters.bytesSent + counters.bytesReceived));
  builder.add(keys.totalCommands, ob::Number::make(counters.commandsProcessed));
}

}  // namespace tavrenix
