// LZMA blocks: a filter byte, the LZMA properties, the dictionary size, eight
// unused bytes, then a raw LZMA stream without end marker whose decoded size
// the store knows. liblzma decodes it; its x86 branch filter undoes the
// filter when the block asks for it.
#include <lzma.h>

#include "tablebase/block_decompression.h"

namespace {

constexpr uint32_t HeaderSize = 14;
constexpr uint32_t MinStreamSize = 5;
constexpr unsigned MaxProperties = 224;
constexpr uint32_t MinDictionary = 4096;

}  // namespace

bool decodeLzma(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize) {
  if (payloadSize < HeaderSize + MinStreamSize) return false;
  const unsigned filter = payload[0], properties = payload[1];
  if (filter > 1 || properties > MaxProperties) return false;
  uint32_t dictionary = uint32_t(payload[2]) | uint32_t(payload[3]) << 8 | uint32_t(payload[4]) << 16 |
                        uint32_t(payload[5]) << 24;

  lzma_options_lzma options{};
  options.lc = properties % 9;
  options.lp = (properties / 9) % 5;
  options.pb = properties / 45;
  options.dict_size = dictionary < MinDictionary ? MinDictionary : dictionary;
  options.ext_flags = LZMA_LZMA1EXT_ALLOW_EOPM;
  options.ext_size_low = expectedSize;
  options.ext_size_high = 0;

  lzma_filter chain[3];
  int at = 0;
  if (filter == 1) chain[at++] = lzma_filter{LZMA_FILTER_X86, nullptr};
  chain[at++] = lzma_filter{LZMA_FILTER_LZMA1EXT, &options};
  chain[at] = lzma_filter{LZMA_VLI_UNKNOWN, nullptr};

  size_t inPosition = 0, outPosition = 0;
  lzma_ret result = lzma_raw_buffer_decode(chain, nullptr, payload + HeaderSize, &inPosition,
                                           payloadSize - HeaderSize, output, &outPosition, expectedSize);
  return result == LZMA_OK && outPosition == expectedSize;
}
