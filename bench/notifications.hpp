// The benchmarks of notifications: the time from a change in the registry to the calls of the
// clients, and the number of calls per second. Both forms of delivery, each with 1, 10 and 100
// registrations.
#pragma once

namespace tavrenix::bench {

void registerNotificationBenchmarks();

}  // namespace tavrenix::bench
