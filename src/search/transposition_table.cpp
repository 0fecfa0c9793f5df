#include "search/transposition_table.h"

#include <atomic>

#include "board/relaxed_field.h"

namespace {

// Several threads read and write the same entries at once. Each field is a
// relaxed atomic of its own: a reader may see a fresh key with stale other
// fields, which the search tolerates (a table move is checked before use).
template <typename T>
inline T load(const T& field) {
  return loadRelaxed(field);
}
template <typename T>
inline void store(T& field, T value) {
  storeRelaxed(field, value);
}

constexpr uint64_t FillSampleBuckets = 16384;

}  // namespace

bool ttProbe(TTHashTable& table, const Board_0x88& board, int32_t alpha, int32_t beta, uint32_t ply, uint32_t depth,
             int32_t& score, Move& move, bool& hit) {
  const uint64_t key = board.history[board.ply].hashKey;
  TTHashTable::Bucket& bucket = table.bucketFor(key);
  for (TTEntry& entry : bucket.entries) {
    if (load(entry.key) != key) continue;
    hit = true;
    score = ttScoreFromTable(load(entry.score), ply);
    Move stored = load(entry.move);
    if (stored != NoMove) move = stored;
    if (load(entry.depth) < depth) return false;
    switch (load(entry.bound)) {
      case BoundExact: return true;
      case BoundLower: return score >= beta;
      case BoundUpper: return score <= alpha;
      default: return false;
    }
  }
  return false;
}

void ttStore(TTHashTable& table, const Board_0x88& board, int32_t lowestScore, int32_t highestScore, int32_t alpha,
             int32_t beta, uint32_t ply, uint32_t depth, int32_t score, Move move) {
  const uint64_t key = board.history[board.ply].hashKey;
  const TTBound bound = ttBoundFor(lowestScore, highestScore, alpha, beta, score);
  TTHashTable::Bucket& bucket = table.bucketFor(key);

  // Same position first, then the first empty entry, then the least worth:
  // shallowest, and among equals the one of the later game ply.
  TTEntry* target = nullptr;
  TTEntry* empty = nullptr;
  TTEntry* cheapest = nullptr;
  uint32_t cheapestWorth = 0;
  for (TTEntry& entry : bucket.entries) {
    uint64_t entryKey = load(entry.key);
    if (entryKey == key) {
      target = &entry;
      break;
    }
    if (entryKey == 0) {
      if (!empty) empty = &entry;
      continue;
    }
    uint32_t worth = uint32_t(load(entry.depth)) * 256 + (256 - uint32_t(load(entry.age)));
    if (!cheapest || worth < cheapestWorth) {
      cheapest = &entry;
      cheapestWorth = worth;
    }
  }
  if (!target) target = empty ? empty : cheapest;

  store(target->key, key);
  store(target->score, int16_t(ttScoreToTable(score, ply)));
  store(target->bound, uint16_t(bound));
  store(target->age, uint8_t(board.ply - ply));
  store(target->move, move);
  store(target->depth, uint8_t(depth));
}

double ttHashFill(const TTHashTable& table) {
  uint64_t sample = table.bucketCount();
  if (sample > FillSampleBuckets) sample = FillSampleBuckets;
  uint64_t used = 0;
  for (uint64_t i = 0; i < sample; ++i)
    for (const TTEntry& entry : table.buckets[i].entries) used += load(entry.key) != 0;
  return double(used) * 100.0 / double(FillSampleBuckets * 4);
}

double pawnHashFill(const PawnHash& table) {
  uint64_t sample = table.bucketCount();
  if (sample > FillSampleBuckets) sample = FillSampleBuckets;
  uint64_t used = 0;
  for (uint64_t i = 0; i < sample; ++i) used += load(table.buckets[i].entries[0].key) != 0;
  return double(used) * 100.0 / double(FillSampleBuckets);
}
