// Makes a block (see ob.h) of a C++ callable, such as a lambda.
//
//   auto block = tavrenix::makeBlock<MPIONotificationBlock>(
//       [&](ObStringRef kind, ObTypeRef handle, void *) { ... });
//   MPIONotificationCreateWithDispatchQueue(&block, queue, &error);
//
// Ownership: the library does not copy a block. It must live as long as its registration.
// Errors: an exception that leaves the callable ends the program.
// Thread safety: the library calls the callable on the thread of the dispatch queue.
#ifndef TAVRENIX_BLOCK_HPP
#define TAVRENIX_BLOCK_HPP

#include <type_traits>
#include <utility>

namespace tavrenix {

// A block that calls a C++ callable.
// REQUIRES: CBlock has a member `invoke`, a pointer to a function with CBlock* as first argument.
template <class CBlock, class Callable, class Invoke = decltype(CBlock::invoke)>
class Block;

template <class CBlock, class Callable, class Result, class... Arguments>
class Block<CBlock, Callable, Result (*)(CBlock*, Arguments...)> : public CBlock {
 public:
  explicit Block(Callable callable) : CBlock{}, callable_(std::move(callable)) {
    CBlock::invoke = [](CBlock* self, Arguments... arguments) noexcept -> Result {
      return static_cast<Block*>(self)->callable_(arguments...);
    };
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

 private:
  Callable callable_;
};

// Returns a block that owns the callable, which is moved or copied into it.
template <class CBlock, class Callable>
Block<CBlock, std::decay_t<Callable>> makeBlock(Callable&& callable) {
  return Block<CBlock, std::decay_t<Callable>>(std::forward<Callable>(callable));
}

}  // namespace tavrenix

#endif
