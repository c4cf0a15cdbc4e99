#include "fuzz/foreign_packet.h"

namespace Zelto::Fuzz {

void SendForeignPacket(const Utilities::SharedHandle&, std::uint8_t, Bytes) {}

}  // namespace Zelto::Fuzz
