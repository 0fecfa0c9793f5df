#include "tablebase/block_offsets.h"

#include <new>

#include "tablebase/endgame_catalogue.h"

BlockOffsets blockOffsets[endgameCount];

namespace {

constexpr uint32_t HeaderWords = 10;
constexpr uint32_t HeaderBytes = HeaderWords * 4;

bool readWord(std::FILE* file, uint32_t& word) {
  unsigned char bytes[4];
  if (std::fread(bytes, 1, 4, file) != 4) return false;
  word = uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
  return true;
}

}  // namespace

bool readBlockOffsetTable(std::FILE* file, BlockOffsets& table) {
  if (std::fseek(file, 0, SEEK_END) != 0) return false;
  const long end = std::ftell(file);
  if (end < 0 || std::fseek(file, 0, SEEK_SET) != 0) return false;
  const uint64_t fileSize = uint64_t(end);
  uint32_t header[HeaderWords];
  for (uint32_t& word : header)
    if (!readWord(file, word)) return false;
  const uint32_t tableEnd = header[8];
  // At least two words (one block), and no further than the file goes.
  if (tableEnd < HeaderBytes + 8 || tableEnd > fileSize) return false;
  const uint32_t count = (tableEnd - HeaderBytes) / 4;
  std::unique_ptr<uint32_t[]> offsets(new (std::nothrow) uint32_t[count]);
  if (!offsets) return false;
  for (uint32_t i = 0; i < count; ++i) {
    if (!readWord(file, offsets[i])) return false;
    bool inOrder = i == 0 ? offsets[i] >= tableEnd : offsets[i] >= offsets[i - 1];
    if (!inOrder || offsets[i] > fileSize) return false;
  }
  table.base = 0;
  table.count = count;
  table.offsets = std::move(offsets);
  return true;
}

bool loadBlockOffsets(int32_t endgame) {
  if (endgame < 0 || endgame >= endgameCount) return false;
  BlockOffsets& table = blockOffsets[endgame];
  if (table.offsets) return true;
  std::FILE* file = endgameCatalogue[endgame].file;
  return file && readBlockOffsetTable(file, table);
}

void clearBlockOffsets() {
  for (BlockOffsets& table : blockOffsets) table = BlockOffsets{};
}
