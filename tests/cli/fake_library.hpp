// A library of fixed answers in place of the real one, for what the real one never answers.
//
// A handle is a dictionary: "name" is what the log of calls shows, "properties" and "paths" are
// what the Copy functions give, and what is absent fails.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "runtime/collections.hpp"

struct FakeLibrary {
  struct Answer {
    bool done = true;
    ob::Ref<const ob::Object> error;  // stored through the error argument where there is one
  };
  ob::Ref<const ob::Array> units;
  std::deque<Answer> answers;      // to the changes to come; those after the last succeed
  std::vector<std::string> calls;  // the changes asked for, and the copies of the units
};

extern FakeLibrary fake;
