// top's rows on a terminal. All that decides is in the model.
#pragma once

#include "monitor/output.hpp"
#include "monitor/top_model.hpp"

namespace tavrenix::monitor {

// Takes the terminal over for as long as it lives. One at a time.
class TopScreen {
 public:
  // Errors: throws Failure if the terminal is not one that can be drawn on.
  explicit TopScreen(const Screen& screen);
  ~TopScreen();
  TopScreen(const TopScreen&) = delete;
  TopScreen& operator=(const TopScreen&) = delete;

  void draw(const TopModel& model);
  // Waits for a key at most that long and does what it asks for. Returns false if it ends top.
  bool act(TopModel& model, int milliseconds);

 private:
  void type(TopModel& model, int key);
  void put(int line, const std::string& text, unsigned long attributes);

  Screen screen_;
  std::size_t first_ = 0;  // row at the upper edge
  bool isHelping_ = false;
  bool isTyping_ = false;  // of the filter
};

}  // namespace tavrenix::monitor
