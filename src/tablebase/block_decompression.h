#pragma once
#include <cstdint>

// The transfer areas of the tablebase store hold a compressed block and its
// decoded bytes; no decoder reads or writes beyond them.
constexpr uint32_t TransferAreaSize = 65536;

// Decodes the payload of one tablebase block (the block without its first
// byte) by the compression scheme of its file: 1 Huffman, 2 LZF, 3 zlib,
// 4 LZMA with an optional x86 filter, 7 run-length, 9 plain copy. `output`
// holds TransferAreaSize bytes; `expectedSize` bytes are wanted. False for
// any other scheme, any malformed payload, a payload or an expected size
// larger than the areas, and whatever a decoder refuses.
bool decompressBlock(uint32_t scheme, const uint8_t* payload, uint32_t payloadSize, uint8_t* output,
                     uint32_t expectedSize);

// The decoders one by one, with the same contract.
bool decodeHuffman(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize);
bool decodeLzf(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize);
bool decodeZlib(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize);
bool decodeLzma(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize);
bool decodeRunLength(const uint8_t* payload, uint32_t payloadSize, uint8_t* output, uint32_t expectedSize);
