#include "tablebase/search_probe.h"

#include "tablebase/block_cache.h"
#include "tablebase/tablebase_files.h"
#include "tablebase/tablebase_store.h"

namespace {

constexpr uint32_t ListEnd = 64;
constexpr int32_t MateScore = 32000;

// The squares and piece codes of one colour, slot by slot, ended at `total`.
void fillSide(const Board_0x88& board, Color c, uint32_t* squares, uint8_t* pieces) {
  const PieceSet& set = board.side[c];
  int n = 0;
  for (int slot = 0; slot <= LastSlot && n < 16; ++slot) {
    Square sq = set.square[slot];
    if (!onBoard(sq)) continue;
    squares[n] = toSquare64(sq);
    pieces[n++] = board.piece[sq];
  }
  squares[n] = ListEnd;
  pieces[n] = 0;
}

}  // namespace

void closeTablebases(TablebaseState& state) {
  state.available = false;
  // A probe in progress finishes before the store goes.
  std::lock_guard<std::mutex> lock(storeMutex);
  freeCache();
  closeStore();
  state.paths.clear();
}

void initTablebases(TablebaseState& state, const std::string& type, const char* gtbPath, uint32_t cacheSizeMB) {
  closeTablebases(state);
  if (type != "gaviota") return;
  std::string all = gtbPath;
  for (size_t start = 0; start <= all.size();) {
    size_t end = all.find(';', start);
    if (end == std::string::npos) end = all.size();
    if (end > start) state.paths.push_back(all.substr(start, end - start));
    start = end + 1;
  }
  {
    std::lock_guard<std::mutex> lock(storeMutex);
    initStore(0, 4, state.paths);
    setupCache(cacheSizeMB);
  }
  state.available = true;
}

bool probePosition(const TablebaseState* state, const Board_0x88& board, Color side, bool hard, int32_t& score) {
  if (!state || !state->available.load(std::memory_order_relaxed)) return false;
  // The tables hold no position with castling rights.
  if (board.castlingRights) return false;
  uint32_t whiteSquares[17], blackSquares[17];
  uint8_t whitePieces[17], blackPieces[17];
  fillSide(board, White, whiteSquares, whitePieces);
  fillSide(board, Black, blackSquares, blackPieces);
  const uint32_t ep = board.epSquare == NoSquare ? ListEnd : toSquare64(board.epSquare);
  uint32_t kind, plies;
  if (!probeEndgame(side, ep, whiteSquares, blackSquares, whitePieces, blackPieces, hard, kind, plies)) return false;
  if (kind >= 3) return false;
  if (kind == 0) {
    score = 0;
    return true;
  }
  const bool sideWins = (kind == 1) == (side == White);
  score = sideWins ? MateScore - int32_t(plies) : int32_t(plies) - MateScore;
  return true;
}
