// The classes of an image: which derives from which.
#pragma once

#include <map>
#include <string>

#include "lab/schema.hpp"

namespace tavrenix::lab {

class Classes {
 public:
  Classes() = default;
  // From the image's "classes" object. Throws ImageError, for a class that derives from itself too.
  Classes(const Json& json, const Place& place);

  // Whether className is base or derives from it. Every class derives from "KsService".
  bool conforms(std::string_view className, std::string_view base) const;

  // Derived class to base class.
  using Bases = std::map<std::string, std::string, std::less<>>;
  const Bases& bases() const noexcept { return bases_; }

 private:
  Bases bases_;
};

}  // namespace tavrenix::lab
