// A C++ callable as a block (see ob.h).
//
//   auto block = tavrenix::makeBlock<MPIONotificationBlock>(
//       [&](ObStringRef kind, ObTypeRef handle, void *) { ... });
//   MPIONotificationCreateWithDispatchQueue(&block, queue, &error);
//
// The block is an ordinary object: it must live as long as the registration that it is passed to.
// What is called must not throw; where it does, the program ends.
#ifndef TAVRENIX_BLOCK_HPP
#define TAVRENIX_BLOCK_HPP

#include <type_traits>
#include <utility>

namespace tavrenix {

// CBlock: a structure whose member invoke is a function pointer that takes CBlock* first.
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

template <class CBlock, class Callable>
Block<CBlock, std::decay_t<Callable>> makeBlock(Callable&& callable) {
  return Block<CBlock, std::decay_t<Callable>>(std::forward<Callable>(callable));
}

}  // namespace tavrenix

#endif
