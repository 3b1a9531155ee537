// A plan or a journal as a JSON document, which is versioned: a new minor version only adds
// members.
#pragma once

#include "maintain/journal.hpp"
#include "monitor/json_document.hpp"

namespace tavrenix::maintain {

monitor::Json documentOf(const Journal& journal);

// Reads what documentOf has made. Errors: throws monitor::Failure or an exception of the JSON
// library, which say what is wrong and not in which file.
Journal journalIn(const std::string& text);

}  // namespace tavrenix::maintain
