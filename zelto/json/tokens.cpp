#include "zelto/json/tokens.h"

#include "zelto/json/number_text.h"

namespace Zelto::Json {

IntegerToken::IntegerToken(std::int32_t value) : text_(DecimalText::OfSigned(value).View()) {}

IntegerToken::IntegerToken(std::uint64_t value) : text_(DecimalText(value).View()) {}

}  // namespace Zelto::Json
