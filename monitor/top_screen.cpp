#include "monitor/top_screen.hpp"

// Its functions, and not macros of the same names.
#define NCURSES_NOMACROS
#include <curses.h>
#include <unistd.h>

#include <algorithm>

#include "monitor/failure.hpp"
#include "monitor/top_text.hpp"
#include "monitor/visible_text.hpp"

namespace tavrenix::monitor {

namespace {

constexpr const char* kKeysHelp[] = {
    "up, down, PgUp, PgDn, Home, End: move",
    "Space, Enter: fold or unfold the unit",
    "f, u: fold or unfold all",
    "s, S: sort by the next, the previous",
    "r: the other way round",
    "/: filter by name, port or state",
    "Esc: no filter     q: quit",
    "! not well         !! requests fail",
};
constexpr int kEscape = 27;
constexpr int kLinesAround = 3;  // summary, heading, last line
enum Pair : short { kWarningPair = 1, kCriticalPair };

TopOrder next(TopOrder order, int step) {
  constexpr int kCount = std::size(kTopOrders);
  return static_cast<TopOrder>((static_cast<int>(order) + step + kCount) % kCount);
}

}  // namespace

TopScreen::TopScreen(const Screen& screen) : screen_(screen) {
  constexpr const char* kInstead = "; use --batch, or status";
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) {
    throw Failure(std::string("top needs a terminal") + kInstead);
  }
  if (::newterm(nullptr, stdout, stdin) == nullptr) {
    throw Failure(std::string("the terminal's type in TERM is not known") + kInstead);
  }
  ::cbreak();
  ::noecho();
  ::keypad(stdscr, true);
  ::set_escdelay(50);
  ::curs_set(0);
  if (screen_.colours) screen_.colours = ::start_color() == OK && ::use_default_colors() == OK;
  if (!screen_.colours) return;
  ::init_pair(kWarningPair, COLOR_YELLOW, -1);
  ::init_pair(kCriticalPair, COLOR_RED, -1);
}

TopScreen::~TopScreen() {
  ::endwin();
}

void TopScreen::put(int line, const std::string& text, unsigned long attributes) {
  ::attrset(static_cast<int>(attributes));
  ::mvaddstr(line, 0, text.c_str());
}

void TopScreen::draw(const TopModel& model) {
  ::erase();
  const int lines = ::getmaxy(stdscr);
  const TopText text(static_cast<std::size_t>(::getmaxx(stdscr)), screen_.asciiOnly);
  const auto& rows = model.rows();
  const auto room = static_cast<std::size_t>(std::max(1, lines - kLinesAround));
  first_ = std::min(first_, model.selected());
  first_ = std::max(first_, model.selected() + 1 - std::min(room, model.selected() + 1));
  if (rows.size() <= first_ + room) first_ = rows.size() - std::min(room, rows.size());
  put(0, text.fit(model.summary()), A_NORMAL);
  put(1, text.heading(), A_BOLD);
  for (std::size_t i = 0; i < room; ++i) {
    const int line = static_cast<int>(i) + 2;
    if (isHelping_ && i < std::size(kKeysHelp)) put(line, text.fit(kKeysHelp[i]), A_NORMAL);
    if (isHelping_ || first_ + i >= rows.size()) continue;
    const TopRow& row = rows[first_ + i];
    unsigned long attributes = first_ + i == model.selected() ? A_REVERSE : A_NORMAL;
    if (screen_.colours && !row.isWell) {
      attributes |=
          static_cast<unsigned long>(COLOR_PAIR(row.isCritical ? kCriticalPair : kWarningPair));
    }
    put(line, text.line(row), attributes);
  }
  std::string last = std::string("by ") + kTopOrders[static_cast<std::size_t>(model.order())];
  if (isTyping_ || !model.filter().empty()) last += "  /" + visible(model.filter());
  if (isTyping_) last += '_';
  if (lines >= kLinesAround) put(lines - 1, text.fit(last + "  ?: help  q: quit"), A_NORMAL);
  ::refresh();
}

void TopScreen::type(TopModel& model, int key) {
  std::string text = model.filter();
  if (key == '\n' || key == KEY_ENTER) {
    isTyping_ = false;
  } else if (key == kEscape) {
    isTyping_ = false;
    text.clear();
  } else if (key == KEY_BACKSPACE || key == 127 || key == '\b') {
    if (!text.empty()) text.pop_back();
  } else if (key >= ' ' && key < 256) {
    text += static_cast<char>(key);
  }
  model.filter(text);
}

bool TopScreen::act(TopModel& model, int milliseconds) {
  ::timeout(milliseconds);
  const int key = ::getch();
  if (key == ERR || key == KEY_RESIZE) return true;
  if (isHelping_) {
    isHelping_ = false;
    return true;
  }
  if (isTyping_) {
    type(model, key);
    return true;
  }
  const auto page = static_cast<std::ptrdiff_t>(std::max(1, ::getmaxy(stdscr) - kLinesAround));
  const auto all = static_cast<std::ptrdiff_t>(model.rows().size());
  switch (key) {
    case 'q':
      return false;
    case '?':
      isHelping_ = true;
      break;
    case '/':
      isTyping_ = true;
      break;
    case kEscape:
      model.filter("");
      break;
    case KEY_UP:
    case 'k':
      model.move(-1);
      break;
    case KEY_DOWN:
    case 'j':
      model.move(1);
      break;
    case KEY_PPAGE:
      model.move(-page);
      break;
    case KEY_NPAGE:
      model.move(page);
      break;
    case KEY_HOME:
      model.move(-all);
      break;
    case KEY_END:
      model.move(all);
      break;
    case ' ':
    case '\n':
    case KEY_ENTER:
      model.toggleFold();
      break;
    case 'f':
      model.foldAll(true);
      break;
    case 'u':
      model.foldAll(false);
      break;
    case 's':
      model.sortBy(next(model.order(), 1));
      break;
    case 'S':
      model.sortBy(next(model.order(), -1));
      break;
    case 'r':
      model.reverse();
      break;
    default:
      break;
  }
  return true;
}

}  // namespace tavrenix::monitor
