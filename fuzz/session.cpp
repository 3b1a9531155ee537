// A client's session on storage of any shape, as the input decides.
#include "fuzz/promise.hpp"
#include "tests/session/client_session.hpp"

void tavrenix::fuzz::run(std::string_view input) {
  test::Choices choices(input);
  const auto callsPerFault = choices.below(2) * 20;
  test::runSession(choices, 200, callsPerFault);
}
