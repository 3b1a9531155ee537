// Ownership of what a Copy or Create function returned: released when it goes out of scope.
#pragma once

#include <tavrenix/ob.h>

#include <memory>
#include <type_traits>

namespace tavrenix::cli {

struct Releaser {
  void operator()(ObTypeRef object) const { ObRelease(object); }
};

/// Ref is one of the reference types of the public headers, such as ObArrayRef.
template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

}  // namespace tavrenix::cli
