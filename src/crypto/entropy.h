// The two sources of the entropy block: what the screen shows and the state of the system's counters. Any thread may
// call them; what they write is a seed's raw material, the caller wipes it.
#pragma once

#include <cstdint>

namespace kest {

constexpr std::uint32_t captureLength = 38400;   // bytes: 240 rows of 160, the bottom row first
constexpr std::uint32_t stateRecordLength = 64;  // bytes, at most

// Copies the top left 320 x 240 pixels of the screen into `buffer` (38,400 bytes), 4 bits a pixel. False when there is
// no screen or it cannot be read whole; what `buffer` then holds is of no meaning.
bool CaptureScreen(std::uint8_t* buffer);

// Writes the counters into `record` (64 bytes), little-endian; answers the length in bytes: 36 to 64, a multiple of 4.
// Counters that the system refuses are left out.
std::uint16_t CollectSystemState(std::uint8_t* record);

}  // namespace kest
