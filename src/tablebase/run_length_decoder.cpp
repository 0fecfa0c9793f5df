// Run-length blocks: byte 253 escapes a run (253, count, value) or itself (253, 253).
#include "tablebase/block_decompression.h"

namespace {
constexpr uint8_t Escape = 253;
}

bool decodeRunLength(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize) {
  uint32_t in = 0, out = 0;
  while (in < payloadSize) {
    if (out >= expectedSize) return false;
    uint8_t b = payload[in++];
    if (b != Escape) {
      output[out++] = b;
      continue;
    }
    if (in >= payloadSize) return false;
    uint8_t count = payload[in++];
    if (count == Escape) {
      output[out++] = Escape;
      continue;
    }
    if (in >= payloadSize || out + count > expectedSize) return false;
    uint8_t value = payload[in++];
    for (unsigned i = 0; i < count; ++i) output[out++] = value;
  }
  return true;
}
