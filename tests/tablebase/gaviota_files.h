#pragma once
// The five 3-man tables of Debian's gaviotatb package in their four compressed
// forms, read whole into memory, with the block arithmetic of the store.
#include <lzma.h>

#include <cstdint>
#include <cstring>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tablebase/endgame_catalogue.h"

namespace gaviota {

inline const char* const tableNames[5] = {"kqk", "krk", "kbk", "knk", "kpk"};

inline std::string tablePath(const std::string& name, int scheme) {
  return std::string(TOLVA_GAVIOTA_DIR) + "/gtb" + std::to_string(scheme) + "/" + name + ".gtb.cp" +
         std::to_string(scheme);
}

inline std::vector<uint8_t> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

// Decoded bytes of block `block` of an endgame whose sides have `indexCount` positions.
inline uint32_t blockLength(uint32_t indexCount, uint32_t block) {
  const uint32_t perSide = (indexCount - 1) / 16384 + 1;
  const uint32_t first = block % perSide * 16384;
  return indexCount - first < 16384 ? indexCount - first : 16384;
}

inline uint32_t indexCountOf(const std::string& name) {
  for (int32_t i = 0; i < endgameCount; ++i)
    if (name == endgameCatalogue[i].name) return endgameCatalogue[i].indexCount;
  return 0;
}

// A scheme-4 payload: no filter, properties 93, dictionary size, eight unused
// bytes, then `plain` coded as raw LZMA by liblzma's encoder.
inline std::vector<uint8_t> lzmaPayload(const std::vector<uint8_t>& plain) {
  lzma_options_lzma options;
  lzma_lzma_preset(&options, 6);
  options.lc = 3, options.lp = 0, options.pb = 2, options.dict_size = 65536;
  lzma_filter chain[2] = {{LZMA_FILTER_LZMA1, &options}, {LZMA_VLI_UNKNOWN, nullptr}};
  std::vector<uint8_t> payload(14 + plain.size() + 1024, 0);
  payload[1] = 93, payload[4] = 1;
  size_t written = 14;
  lzma_raw_buffer_encode(chain, nullptr, plain.data(), plain.size(), payload.data(), &written, payload.size());
  payload.resize(written);
  return payload;
}

// A whole table file of `name` in scheme 4 whose every position has the
// stored byte `value`: the header, the block offsets and LZMA blocks.
inline std::vector<uint8_t> syntheticTable(uint32_t indexCount, uint8_t value) {
  const uint32_t perSide = (indexCount - 1) / 16384 + 1, blocks = 2 * perSide;
  std::vector<std::vector<uint8_t>> payloads;
  for (uint32_t b = 0; b < blocks; ++b) payloads.push_back(lzmaPayload(std::vector<uint8_t>(blockLength(indexCount, b), value)));
  const uint32_t tableEnd = 40 + 4 * (blocks + 1);
  std::vector<uint8_t> file(tableEnd, 0);
  auto word = [&](size_t at, uint32_t v) { for (int i = 0; i < 4; ++i) file[at + size_t(i)] = uint8_t(v >> (8 * i)); };
  word(32, tableEnd);
  uint32_t offset = tableEnd;
  for (uint32_t b = 0; b <= blocks; ++b) {
    word(40 + 4 * b, offset);
    if (b < blocks) offset += uint32_t(payloads[b].size()) + 1;
  }
  for (const auto& p : payloads) {
    file.push_back(0);  // the byte a decoder skips
    file.insert(file.end(), p.begin(), p.end());
  }
  return file;
}

}  // namespace gaviota
