// Plans and journals as text for a person, and for a change ticket.
#pragma once

#include "maintain/journal.hpp"
#include "monitor/output.hpp"

namespace tavrenix::maintain {

// Unit by unit, the usable paths before and after by access state, and what becomes of each path.
std::string planText(const Journal& plan, const monitor::Screen& screen);

// Who did what, when and why, how it ended, and the plan with the steps that were reached.
std::string ticketText(const Journal& journal, const monitor::Screen& screen);

}  // namespace tavrenix::maintain
