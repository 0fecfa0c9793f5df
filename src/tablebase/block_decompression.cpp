#include "tablebase/block_decompression.h"

#include <zlib.h>

#include <cstring>

bool decodeZlib(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t) {
  z_stream stream{};
  if (inflateInit2(&stream, 15) != Z_OK) return false;
  stream.next_in = const_cast<Bytef*>(payload);
  stream.avail_in = payloadSize;
  stream.next_out = output;
  stream.avail_out = TransferAreaSize;
  int result = inflate(&stream, Z_FINISH);
  inflateEnd(&stream);
  return result == Z_STREAM_END;
}

bool decompressBlock(uint32_t scheme, const uint8_t* payload, uint32_t payloadSize, uint8_t* output,
                     uint32_t expectedSize) {
  if (payloadSize > TransferAreaSize || expectedSize > TransferAreaSize) return false;
  switch (scheme) {
    case 1: return decodeHuffman(payload, payloadSize, output, expectedSize);
    case 2: return decodeLzf(payload, payloadSize, output, expectedSize);
    case 3: return decodeZlib(payload, payloadSize, output, expectedSize);
    case 4: return decodeLzma(payload, payloadSize, output, expectedSize);
    case 7: return decodeRunLength(payload, payloadSize, output, expectedSize);
    case 9:
      std::memcpy(output, payload, payloadSize);
      return true;
    default: return false;
  }
}
