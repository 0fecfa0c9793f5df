#pragma once
// The five 3-man tables of Debian's gaviotatb package in their four compressed
// forms, read whole into memory, with the block arithmetic of the store.
#include <cstdint>
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

}  // namespace gaviota
