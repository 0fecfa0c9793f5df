// Tablebase block decoding in decoded MB/s: every block of kpk and kqk, the
// zlib (scheme 3) and LZMA (scheme 4) forms of Debian's gaviotatb tables.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tablebase/block_decompression.h"
#include "tablebase/block_offsets.h"
#include "tablebase/endgame_catalogue.h"

namespace {

struct Block {
  uint32_t at, size, length;
};

void BM_DecodeBlocks(benchmark::State& state) {
  const uint32_t scheme = uint32_t(state.range(0));
  std::vector<std::vector<uint8_t>> files;
  std::vector<std::vector<Block>> blocks;
  for (const char* name : {"kpk", "kqk"}) {
    std::string path = std::string(TOLVA_GAVIOTA_DIR) + "/gtb" + std::to_string(scheme) + "/" + name + ".gtb.cp" +
                       std::to_string(scheme);
    std::ifstream in(path, std::ios::binary);
    files.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    std::FILE* stream = fmemopen(files.back().data(), files.back().size(), "rb");
    BlockOffsets table;
    if (!stream || !readBlockOffsetTable(stream, table)) {
      state.SkipWithError(("can't read " + path).c_str());
      return;
    }
    std::fclose(stream);
    uint32_t n = 0;
    for (int32_t e = 0; e < endgameCount; ++e)
      if (std::string(endgameCatalogue[e].name) == name) n = endgameCatalogue[e].indexCount;
    const uint32_t perSide = (n - 1) / 16384 + 1;
    blocks.emplace_back();
    for (uint32_t b = 0; b + 1 < table.count; ++b) {
      uint32_t first = b % perSide * 16384;
      blocks.back().push_back({table.offsets[b], table.offsets[b + 1] - table.offsets[b], n - first < 16384 ? n - first : 16384});
    }
  }
  auto output = std::make_unique<uint8_t[]>(TransferAreaSize);
  uint64_t decoded = 0;
  for (auto _ : state) {
    for (size_t f = 0; f < files.size(); ++f)
      for (const Block& b : blocks[f]) {
        if (!decompressBlock(scheme, files[f].data() + b.at + 1, b.size - 1, output.get(), b.length)) {
          state.SkipWithError("decoding failed");
          return;
        }
        decoded += b.length;
      }
  }
  state.SetBytesProcessed(int64_t(decoded));
}
BENCHMARK(BM_DecodeBlocks)->Arg(3)->Arg(4)->Unit(benchmark::kMicrosecond);

}  // namespace
