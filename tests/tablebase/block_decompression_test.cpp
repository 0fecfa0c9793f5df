// The block decoders on every block of the real tables, on payloads built
// here for their corner cases, and on thousands of mutated real files.
#include <gtest/gtest.h>

#include <lzma.h>

#include <cstring>
#include <memory>
#include <random>

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

TEST(BlockDecompressionTest, LzmaHeaderRulesAndTheX86Filter) {
  auto out = std::make_unique<Output>();
  Bytes text(300);
  for (size_t i = 0; i < text.size(); ++i) text[i] = uint8_t(i * 7 % 13);
  Bytes good = gaviota::lzmaPayload(text, 0);
  ASSERT_TRUE(decode(4, good, *out, uint32_t(text.size())));
  EXPECT_EQ(0, std::memcmp(out->bytes, text.data(), text.size()));
  // The header and 5 stream bytes are the least a payload holds.
  Bytes tiny = gaviota::lzmaPayload({42}, 0);
  ASSERT_GE(tiny.size(), 19u);
  EXPECT_FALSE(decode(4, Bytes(tiny.begin(), tiny.begin() + 18), *out, 1));
  Bytes bad = good;
  bad[0] = 2;
  EXPECT_FALSE(decode(4, bad, *out, uint32_t(text.size())));
  bad = good;
  bad[1] = 225;
  EXPECT_FALSE(decode(4, bad, *out, uint32_t(text.size())));
  // More bytes wanted than the stream holds.
  EXPECT_FALSE(decode(4, good, *out, uint32_t(text.size() + 1)));

  // A call instruction: converted back by the filter from five decoded bytes on, never in four.
  const Bytes call = {0xE8, 0x10, 0x00, 0x00, 0x00, 0x90};
  ASSERT_TRUE(decode(4, gaviota::lzmaPayload(call, 1), *out, 6));
  EXPECT_EQ(Bytes(out->bytes, out->bytes + 6), (Bytes{0xE8, 0x0B, 0x00, 0x00, 0x00, 0x90}));
  ASSERT_TRUE(decode(4, gaviota::lzmaPayload(Bytes(call.begin(), call.begin() + 4), 1), *out, 4));
  EXPECT_EQ(Bytes(out->bytes, out->bytes + 4), Bytes(call.begin(), call.begin() + 4));
}

TEST(BlockDecompressionTest, WrittenDecodersOnCraftedPayloads) {
  const struct {
    uint32_t scheme;
    Bytes payload;
    uint32_t expected;
    bool ok;
    Bytes result;
  } cases[] = {
      // LZF: one literal, then length code 7 plus 0 at distance 1: nine more copies.
      {2, {0x00, 'a', 0xE0, 0x00, 0x00}, 10, true, Bytes(10, 'a')},
      {2, {0x01, 'a', 'b', 0x20, 0x01}, 5, true, {'a', 'b', 'a', 'b', 'a'}},
      {2, {0x00, 'a', 0x20, 0x01}, 3, false, {}},  // reference before the start
      {2, {0x03, 'a', 'b'}, 4, false, {}},         // literal run cut off
      {2, {0x00, 'a', 0xE0}, 4, false, {}},        // length byte missing
      {2, {}, 1, false, {}},                        // nothing written
      // Run-length: an escaped escape, a run, runs that don't fit or are cut off.
      {7, {1, 253, 253, 2}, 3, true, {1, 253, 2}},
      {7, {253, 5, 7}, 5, true, {7, 7, 7, 7, 7}},
      {7, {253, 5, 7}, 4, false, {}},
      {7, {253}, 4, false, {}},
      {7, {253, 5}, 5, false, {}},
      {7, {1, 2, 3}, 2, false, {}},  // output full with input left
      // Huffman: 3 symbols; tree inner(leaf 'A', leaf 'B'), codes 0 1 0.
      // Bits, lowest first: 0 1 A(8) 1 B(8) 0 1 0.
      {1, {3, 0, 0, 0, 0x06, 0x15, 0x12}, 3, true, {'A', 'B', 'A'}},
      {1, {3, 0, 0, 0, 0x06}, 3, false, {}},  // stream ends inside the tree
      {1, {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
           0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
           0, 0, 0, 0, 0, 0, 0, 0},
       1, false, {}},  // only inner nodes: more than 512
      {1, {0, 0, 1, 0, 0x03}, 1, false, {}},  // more symbols than the area holds
      // Plain copy, and schemes that don't exist.
      {9, {1, 2, 3}, 3, true, {1, 2, 3}},
      {5, {1, 2, 3}, 3, false, {}},
      {0, {1, 2, 3}, 3, false, {}},
  };
  auto out = std::make_unique<Output>();
  for (size_t i = 0; i < std::size(cases); ++i) {
    const auto& c = cases[i];
    EXPECT_EQ(decode(c.scheme, c.payload, *out, c.expected), c.ok) << "case " << i;
    if (c.ok) {
      EXPECT_EQ(0, std::memcmp(out->bytes, c.result.data(), c.result.size())) << "case " << i;
    }
  }
  // Nothing larger than the areas, in or out.
  Bytes large(TransferAreaSize + 1, 7);
  EXPECT_FALSE(decode(9, large, *out, 16));
  EXPECT_FALSE(decode(9, {1}, *out, TransferAreaSize + 1));
}

// Mutated real files through the offset reader and every decoder: whatever
// the bytes, a refusal or a decoding, never a read or write out of bounds.
TEST(BlockDecompressionTest, MutatedRealFilesAreRefusedOrDecodedSafely) {
  std::mt19937 random(20261124);
  auto out = std::make_unique<Output>();
  int refusedTables = 0, decodedBlocks = 0;
  for (const char* name : gaviota::tableNames) {
    const uint32_t n = gaviota::indexCountOf(name);
    for (uint32_t scheme = 1; scheme <= 4; ++scheme) {
      const Bytes original = gaviota::readFile(gaviota::tablePath(name, int(scheme)));
      ASSERT_FALSE(original.empty());
      for (int trial = 0; trial < 150; ++trial) {
        Bytes file = original;
        switch (trial % 3) {
          case 0:  // a few bytes of the header and the offset table
            for (int k = 0; k < 1 + trial % 4; ++k) file[random() % std::min<size_t>(file.size(), 200)] = uint8_t(random());
            break;
          case 1:  // random bytes anywhere, blocks included
            for (int k = 0; k < 1 + trial % 16; ++k) file[random() % file.size()] = uint8_t(random());
            break;
          default:  // cut short
            file.resize(random() % file.size());
        }
        if (file.empty()) file.push_back(0);
        BlockOffsets table;
        std::FILE* stream = fmemopen(file.data(), file.size(), "rb");
        ASSERT_NE(stream, nullptr);
        bool read = readBlockOffsetTable(stream, table);
        std::fclose(stream);
        if (!read) {
          ++refusedTables;
          continue;
        }
        for (uint32_t block = 0; block + 1 < table.count; ++block) {
          const uint32_t at = table.offsets[block], size = table.offsets[block + 1] - at;
          ASSERT_LE(uint64_t(at) + size, file.size());
          if (size == 0) continue;
          // A block beyond what the endgame has still gets a length within the areas.
          uint32_t length = block < 2 * ((n - 1) / 16384 + 1) ? gaviota::blockLength(n, block) : 16384;
          decodedBlocks += decompressBlock(scheme, file.data() + at + 1, size - 1, out->bytes, length);
        }
      }
    }
  }
  EXPECT_GT(refusedTables, 100);
  EXPECT_GT(decodedBlocks, 1000);
}

}  // namespace
