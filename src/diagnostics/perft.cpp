#include "diagnostics/perft.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "board/move_text.h"

void perftHashStore(PerftHashTable& table, uint64_t key, uint64_t count, uint32_t depth) {
  PerftHashTable::Bucket& bucket = table.bucketFor(key);
  const uint64_t key48 = key & PerftKeyMask;
  PerftEntry* target = nullptr;
  for (PerftEntry& entry : bucket.entries) {
    if (perftEntryKey(entry) == key48) {
      target = &entry;
      break;
    }
  }
  if (!target) {
    for (PerftEntry& entry : bucket.entries) {
      if (perftEntryKey(entry) == 0) {
        target = &entry;
        break;
      }
    }
  }
  if (!target) {
    target = &bucket.entries[0];
    for (PerftEntry& entry : bucket.entries)
      if (entry.depth < target->depth) target = &entry;
  }
  target->count = count;
  target->depth = uint16_t(depth);
  std::memcpy(target->key, &key, sizeof target->key);
}

void preparePerftHash(PerftTable& perft) {
  if (perft.hash) {
    perft.hash->clear();
    return;
  }
  perft.hash = std::make_unique<PerftHashTable>("Perft hash");
  perft.currentSizeMB = uint32_t(perft.hash->sizeFor(perft.sizeMB));
  perft.hash->waitUntilMapped();
}

double perftHashFill(const PerftHashTable& table) {
  uint64_t sample = table.bucketCount() < 16384 ? table.bucketCount() : 16384;
  uint64_t used = 0;
  for (uint64_t i = 0; i < sample; ++i)
    for (const PerftEntry& entry : table.buckets[i].entries) used += perftEntryKey(entry) != 0;
  return double(used) * 100.0 / 65536;
}

template <Color C, bool InCheck>
uint64_t divideRoot(PerftStats& stats, Board_0x88& board, const CheckInfo& checkInfo, PerftHashTable* perftHash,
                    uint32_t depth, const RootMoveCounts& perMove) {
  ++stats.nodes;
  MoveSelector selector(InCheck ? 1 : 0, &board, checkInfo, NoMove);
  uint64_t total = 0;
  for (;;) {
    const ScoredMove* sm;
    if constexpr (InCheck)
      sm = selector.nextEvasion<C>();
    else
      sm = selector.nextMove<C>();
    if (!sm) break;
    uint64_t count = depth == 1 ? 1 : perftChild<C>(stats, board, sm->move, perftHash, depth - 1);
    total += count;
    perMove(sm->move, count);
  }
  return total;
}

template uint64_t divideRoot<White, false>(PerftStats&, Board_0x88&, const CheckInfo&, PerftHashTable*, uint32_t,
                                            const RootMoveCounts&);
template uint64_t divideRoot<White, true>(PerftStats&, Board_0x88&, const CheckInfo&, PerftHashTable*, uint32_t,
                                            const RootMoveCounts&);
template uint64_t divideRoot<Black, false>(PerftStats&, Board_0x88&, const CheckInfo&, PerftHashTable*, uint32_t,
                                            const RootMoveCounts&);
template uint64_t divideRoot<Black, true>(PerftStats&, Board_0x88&, const CheckInfo&, PerftHashTable*, uint32_t,
                                            const RootMoveCounts&);

namespace {

bool everyManHasASlot(const Board_0x88& board, Color c) {
  int inSlots = 0;
  for (Square sq : board.side[c].square) inSlots += !(sq & 0x88);
  return inSlots == board.side[c].total;
}

bool isSoundRoot(const Board_0x88& board) {
  if (!everyManHasASlot(board, White) || !everyManHasASlot(board, Black)) return false;
  if (board.sideToMove == White) return !isAttacked<White>(board, board.side[Black].square[0]);
  return !isAttacked<Black>(board, board.side[White].square[0]);
}

}  // namespace

uint64_t countLeaves(PerftStats& stats, Board_0x88& board, PerftHashTable* perftHash, uint32_t depth,
                     const RootMoveCounts* perMove) {
  // A board cleared by a refused FEN has no side to move and no moves.
  if (board.sideToMove != White && board.sideToMove != Black) return 0;
  stats.checkFromLastMove = isSoundRoot(board);
  CheckInfo checkInfo{};
  if (board.sideToMove == White) {
    bool inCheck = findCheck<White>(board, board.side[White].square[0], checkInfo);
    if (perMove)
      return inCheck ? divideRoot<White, true>(stats, board, checkInfo, perftHash, depth, *perMove)
                     : divideRoot<White, false>(stats, board, checkInfo, perftHash, depth, *perMove);
    return inCheck ? perftNode<White, true>(stats, board, checkInfo, perftHash, depth)
                   : perftNode<White, false>(stats, board, checkInfo, perftHash, depth);
  }
  bool inCheck = findCheck<Black>(board, board.side[Black].square[0], checkInfo);
  if (perMove)
    return inCheck ? divideRoot<Black, true>(stats, board, checkInfo, perftHash, depth, *perMove)
                   : divideRoot<Black, false>(stats, board, checkInfo, perftHash, depth, *perMove);
  return inCheck ? perftNode<Black, true>(stats, board, checkInfo, perftHash, depth)
                 : perftNode<Black, false>(stats, board, checkInfo, perftHash, depth);
}

namespace {

// A root line of divide: "move count".
const RootMoveCounts printDivideLine = [](Move move, uint64_t count) {
  char text[6];
  moveToText(move, text);
  std::cout << text << ' ' << count << '\n';
};

}  // namespace

uint64_t countLeaves(PerftStats& stats, Board_0x88& board, PerftHashTable* perftHash, uint32_t depth, bool divide) {
  if (!divide) return countLeaves(stats, board, perftHash, depth, nullptr);
  const uint64_t leaves = countLeaves(stats, board, perftHash, depth, &printDivideLine);
  std::cout << std::flush;
  return leaves;
}

uint64_t countFromPosition(PerftStats& stats, Board_0x88& board, PerftTable& perft, uint32_t depth,
                           const RootMoveCounts* perMove) {
  preparePerftHash(perft);
  PositionRecord& record = board.history[board.ply];
  record.hashKey = board.computeFullHash();
  record.pawnHashKey = board.computePawnHash();
  return countLeaves(stats, board, perft.hash.get(), depth, perMove);
}

namespace {

// Centiseconds as seconds with two decimals.
std::string secondsText(uint32_t centis) {
  char text[32];
  std::snprintf(text, sizeof text, "%u.%02u s", centis / 100, centis % 100);
  return text;
}

bool perftCommand(Board_0x88& board, TimeControl& clock, PerftTable& perft, const std::vector<std::string>& args,
                  bool divide) {
  int depth = args.empty() ? 0 : std::atoi(args[0].c_str());
  if (depth < 1) return false;

  // The game's clock reading is given up: perft measures with a clock from zero.
  clock.clockRunning = false;
  clock.elapsed = 0;
  clock.clockStart = 0;
  clock.startClock();

  PerftStats stats;
  const uint64_t leaves = countFromPosition(stats, board, perft, uint32_t(depth), divide ? &printDivideLine : nullptr);
  if (divide) std::cout << std::flush;

  clock.stopClock();
  uint32_t duration = clock.elapsed - clock.elapsedAtMoveStart;
  uint64_t perSecond = duration == 0 ? 0 : stats.nodes * 100 / duration;
  double fill = perftHashFill(*perft.hash);

  const char* prefix = divide ? "" : "# ";
  std::cout << prefix << "Total leaves: " << leaves << '\n'
            << prefix << "Total nodes:  " << stats.nodes << '\n'
            << prefix << "Time elapsed: " << secondsText(duration) << '\n'
            << prefix << "Nodes/second: " << perSecond << '\n'
            << "# perftHashFull%:  " << fill << '\n';
  if (!divide) std::cout << "# perftHashHits:   " << stats.hashHits << '\n';
  std::cout << std::flush;
  return true;
}

}  // namespace

bool runPerftCommand(Board_0x88& board, TimeControl& clock, PerftTable& perft, const std::vector<std::string>& args) {
  return perftCommand(board, clock, perft, args, false);
}

bool runDivideCommand(Board_0x88& board, TimeControl& clock, PerftTable& perft, const std::vector<std::string>& args) {
  return perftCommand(board, clock, perft, args, true);
}
