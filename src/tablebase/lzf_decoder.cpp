// LZF blocks: literal runs and back references, each behind a control byte.
#include "tablebase/block_decompression.h"

#include <algorithm>

bool decodeLzf(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize) {
  const uint32_t limit = std::min(expectedSize, TransferAreaSize);
  uint32_t in = 0, out = 0;
  while (in < payloadSize) {
    unsigned control = payload[in++];
    if (control < 32) {
      uint32_t length = control + 1;
      if (in + length > payloadSize || out + length > limit) return false;
      for (uint32_t i = 0; i < length; ++i) output[out++] = payload[in++];
      continue;
    }
    uint32_t length = control >> 5;
    if (length == 7) {
      if (in >= payloadSize) return false;
      length += payload[in++];
    }
    if (in >= payloadSize) return false;
    uint32_t distance = ((control & 0x1f) << 8) + payload[in++] + 1;
    length += 2;
    if (distance > out || out + length > limit) return false;
    // Byte by byte: a reference may overlap the bytes it is writing.
    for (uint32_t i = 0; i < length; ++i, ++out) output[out] = output[out - distance];
  }
  // A block whose input ends before its output is full was cut short.
  return out > 0 && out == expectedSize;
}
