// The numbers by which channel operations name a channel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ombrilo {

constexpr bool IsChannel(uint32_t number) { return number >= 1 && number <= 3; }

// 1 red, 2 green, 3 blue, as the channel's place among blue, green, red bytes.
constexpr size_t ChannelByte(uint32_t number) { return 3 - number; }

}  // namespace ombrilo
