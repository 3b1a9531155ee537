#include "model/errors.hpp"

#include "model/keys.hpp"
#include "runtime/pool.hpp"
#include "runtime/values.hpp"

namespace tavrenix {

const ob::Error* MPIOErrorCreate(std::string_view message, MPIOErrorCode code,
                                 std::optional<std::int32_t> resultCode) {
  ob::Ref<const ob::Dictionary> userInfo;
  if (resultCode) {
    ob::DictionaryBuilder builder(1);
    builder.add(keys::kMPIOErrorResultCodeKey, ob::Number::make(std::int64_t{*resultCode}));
    userInfo = builder.build();
  }
  return ob::Pool::keep(
      ob::make<ob::Error>(ob::String::makeUnchecked(message), code, std::move(userInfo)));
}

}  // namespace tavrenix
