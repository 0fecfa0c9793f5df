// The block decoders on every block of the real tables in all four schemes,
// and on payloads built here for their corner cases.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tablebase/block_decompression.h"
#include "tablebase/block_offsets.h"
#include "gaviota_files.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Output {
  uint8_t bytes[TransferAreaSize];
};

bool decode(uint32_t scheme, const Bytes& payload, Output& out, uint32_t expected) {
  return decompressBlock(scheme, payload.data(), uint32_t(payload.size()), out.bytes, expected);
}

BlockOffsets offsetsOf(Bytes& file) {
  BlockOffsets table;
  std::FILE* stream = fmemopen(file.data(), file.size(), "rb");
  EXPECT_TRUE(stream && readBlockOffsetTable(stream, table));
  if (stream) std::fclose(stream);
  return table;
}

TEST(BlockDecompressionTest, EveryBlockOfTheRealTablesDecodesAlikeInAllFourSchemes) {
  const uint32_t schemes[4] = {1, 2, 3, 4};
  for (const char* name : gaviota::tableNames) {
    const uint32_t n = gaviota::indexCountOf(name);
    Bytes files[4];
    BlockOffsets tables[4];
    for (int s = 0; s < 4; ++s) {
      files[s] = gaviota::readFile(gaviota::tablePath(name, int(schemes[s])));
      ASSERT_FALSE(files[s].empty()) << gaviota::tablePath(name, int(schemes[s]));
      tables[s] = offsetsOf(files[s]);
      ASSERT_EQ(tables[s].count, 2 * ((n - 1) / 16384 + 1) + 1) << name << " scheme " << schemes[s];
    }
    for (uint32_t block = 0; block + 1 < tables[0].count; ++block) {
      const uint32_t length = gaviota::blockLength(n, block);
      auto first = std::make_unique<Output>();
      for (int s = 0; s < 4; ++s) {
        auto out = std::make_unique<Output>();
        // A different filling per scheme shows up any byte a decoder failed to write.
        std::memset(out->bytes, 0x55 + s, sizeof out->bytes);
        const uint32_t at = tables[s].offsets[block], size = tables[s].offsets[block + 1] - at;
        ASSERT_TRUE(decompressBlock(schemes[s], files[s].data() + at + 1, size - 1, out->bytes, length))
            << name << " block " << block << " scheme " << schemes[s];
        if (s == 0)
          first = std::move(out);
        else
          EXPECT_EQ(0, std::memcmp(first->bytes, out->bytes, length)) << name << " block " << block << " scheme " << schemes[s];
      }
    }
  }
}

// Payloads built for the corner cases of each decoder, and the bounds of the areas.
TEST(BlockDecompressionTest, CraftedPayloads) {
  Bytes text(300);
  for (size_t i = 0; i < text.size(); ++i) text[i] = uint8_t(i * 7 % 13);
  const Bytes lzma = gaviota::lzmaPayload(text, 0);
  Bytes badFilter = lzma, badProperties = lzma;
  badFilter[0] = 2;
  badProperties[1] = 225;
  // A call instruction: converted back by the filter from five decoded bytes on, never in four.
  const Bytes call = {0xE8, 0x10, 0x00, 0x00, 0x00, 0x90};
  const struct {
    const char* what;
    uint32_t scheme;
    Bytes payload;
    uint32_t expected;
    bool ok;
    Bytes result;
  } cases[] = {
      {"LZMA", 4, lzma, 300, true, text},
      {"LZMA, below the header and 5 stream bytes", 4, Bytes(lzma.begin(), lzma.begin() + 18), 1, false, {}},
      {"LZMA, unknown filter", 4, badFilter, 300, false, {}},
      {"LZMA, properties beyond 224", 4, badProperties, 300, false, {}},
      {"LZMA, x86 filter", 4, gaviota::lzmaPayload(call, 1), 6, true, {0xE8, 0x0B, 0x00, 0x00, 0x00, 0x90}},
      {"LZMA, x86 filter on four bytes", 4, gaviota::lzmaPayload(Bytes(call.begin(), call.begin() + 4), 1), 4, true,
       Bytes(call.begin(), call.begin() + 4)},
      // LZF: one literal, then length code 7 plus 0 at distance 1: nine more copies.
      {"LZF, long copy", 2, {0x00, 'a', 0xE0, 0x00, 0x00}, 10, true, Bytes(10, 'a')},
      {"LZF, short copy", 2, {0x01, 'a', 'b', 0x20, 0x01}, 5, true, {'a', 'b', 'a', 'b', 'a'}},
      {"LZF, reference before the start", 2, {0x00, 'a', 0x20, 0x01}, 3, false, {}},
      {"LZF, length byte missing", 2, {0x00, 'a', 0xE0}, 4, false, {}},
      {"LZF, nothing written", 2, {}, 1, false, {}},
      {"run length, an escaped escape", 7, {1, 253, 253, 2}, 3, true, {1, 253, 2}},
      {"run length, a run", 7, {253, 5, 7}, 5, true, {7, 7, 7, 7, 7}},
      {"run length, a run that doesn't fit", 7, {253, 5, 7}, 4, false, {}},
      {"run length, cut after the escape", 7, {253}, 4, false, {}},
      {"run length, output full with input left", 7, {1, 2, 3}, 2, false, {}},
      // Huffman: 3 symbols; tree inner(leaf 'A', leaf 'B'); bits, lowest first: 0 1 A(8) 1 B(8) 0 1 0.
      {"Huffman", 1, {3, 0, 0, 0, 0x06, 0x15, 0x12}, 3, true, {'A', 'B', 'A'}},
      {"Huffman, the stream ends inside the tree", 1, {3, 0, 0, 0, 0x06}, 3, false, {}},
      {"Huffman, only inner nodes: more than 512", 1, [] { Bytes b(80, 0); b[0] = 1; return b; }(), 1, false, {}},
      {"Huffman, more symbols than the area holds", 1, {0, 0, 1, 0, 0x03}, 1, false, {}},
      {"plain copy", 9, {1, 2, 3}, 3, true, {1, 2, 3}},
      {"no scheme 5", 5, {1, 2, 3}, 3, false, {}},
      {"input larger than the area", 9, Bytes(TransferAreaSize + 1, 7), 16, false, {}},
      {"output larger than the area", 9, {1}, TransferAreaSize + 1, false, {}},
  };
  auto out = std::make_unique<Output>();
  for (const auto& c : cases) {
    EXPECT_EQ(decode(c.scheme, c.payload, *out, c.expected), c.ok) << c.what;
    if (c.ok) {
      EXPECT_EQ(Bytes(out->bytes, out->bytes + c.expected), c.result) << c.what;
    }
  }
}

}  // namespace
