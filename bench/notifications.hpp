// How long it takes from an event at the registry to the clients' calls, and how many events get
// through: both delivery forms, with 1, 10 and 100 registrations.
#pragma once

namespace tavrenix::bench {

void registerNotificationBenchmarks();

}  // namespace tavrenix::bench
