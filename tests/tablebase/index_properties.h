#pragma once
// Properties that every position index must have, checked one placement at a
// time; shared by the unit tests (samples) and the deep sweeps (all of them).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "tablebase/endgame_catalogue.h"
#include "tablebase/numbering_tables.h"

namespace indextest {

// Squares of the men, first list then second, each list ended by 64.
struct Placement {
  uint32_t w[5];
  uint32_t b[3];
};

// The index functions of a row or a family and the letters of its men.
class IndexChecker {
 public:
  IndexChecker(const std::string& name, const IndexFamily& family)
      : toIndex(family.positionToIndex), toPosition(family.indexToPosition), indexCount(family.indexCount),
        pawnless(family.pawnless) {
    size_t second = name.find('k', 1);
    for (size_t i = 0; i < name.size(); ++i) {
      int man = i < second ? int(i) : 4 + int(i - second);
      letter[man] = name[i];
      men[manCount++] = man;
    }
  }

  int manCount = 0;
  int men[5] = {};  // places in squares(): 0 to 3 the first list, 4 and 5 the second
  char letter[8] = {};

  static uint32_t* squares(Placement& p, int man) { return man < 4 ? &p.w[man] : &p.b[man - 4]; }
  static uint32_t square(const Placement& p, int man) { return man < 4 ? p.w[man] : p.b[man - 4]; }

  Placement placement(const uint32_t* sq) const {
    Placement p{{64, 64, 64, 64, 64}, {64, 64, 64}};
    for (int i = 0; i < manCount; ++i) *squares(p, men[i]) = sq[i];
    return p;
  }

  // Distinct squares, pawns on ranks 2 to 7.
  bool legal(const uint32_t* sq) const {
    uint64_t taken = 0;
    for (int i = 0; i < manCount; ++i) {
      if (taken >> sq[i] & 1) return false;
      if (letter[men[i]] == 'p' && (sq[i] < 8 || sq[i] > 55)) return false;
      taken |= uint64_t(1) << sq[i];
    }
    return true;
  }

  Placement randomLegal(std::mt19937_64& random) const {
    uint32_t sq[5];
    do {
      for (int i = 0; i < manCount; ++i) sq[i] = uint32_t(random() % 64);
    } while (!legal(sq));
    return placement(sq);
  }

  // Calls visit for every legal placement; 64 to the power of the men.
  template <typename Visit>
  void forEachLegal(Visit visit) const {
    uint32_t sq[5] = {};
    for (;;) {
      if (legal(sq)) visit(placement(sq));
      int i = manCount - 1;
      while (i >= 0 && ++sq[i] == 64) sq[i--] = 0;
      if (i < 0) return;
    }
  }

  // Empty if the placement passes: refused exactly when its kings touch in a
  // family led by the king pair; otherwise an index below the count whose
  // position maps back to it and is a symmetric image of the placement; every
  // image has the same index, except where the men that choose the image stand
  // symmetrically themselves: kings on one long diagonal, or a lone pair of
  // pawns on mirror squares. Then the images have two indices.
  std::string check(const Placement& p) const {
    uint32_t index = 0;
    bool indexed = toIndex(p.w, p.b, index);
    if (pawnless && kingsTouch(p)) return indexed || index != noNumber ? "touching kings not refused" : "";
    if (!indexed) return index == noNumber ? "refused" : "refused without all ones";
    if (index >= indexCount) return "index " + std::to_string(index) + " beyond the count";
    Placement back;
    uint32_t again = 0;
    if (!toPosition(index, back.w, back.b)) return "no position for index " + std::to_string(index);
    if (!toIndex(back.w, back.b, again) || again != index) return "round trip of " + std::to_string(index);
    bool backIsImage = false;
    uint32_t otherIndex = index;
    for (uint32_t flags = 0; flags < (pawnless ? 8u : 2u); ++flags) {
      Placement image = p;
      for (int i = 0; i < manCount; ++i) *squares(image, men[i]) = pieceFlip(square(p, men[i]), flags);
      backIsImage = backIsImage || sameMen(image, back);
      uint32_t imageIndex = 0;
      toIndex(image.w, image.b, imageIndex);
      if (imageIndex == index) continue;
      if (otherIndex != index && imageIndex != otherIndex) return "three indices among the images";
      otherIndex = imageIndex;
    }
    if (otherIndex != index && !(pawnless ? kingsOnOneLongDiagonal(p) : pawnPairOnMirrorSquares(p)))
      return "an image has another index";
    if (!backIsImage) return "the position of index " + std::to_string(index) + " isn't an image";
    return "";
  }

  static std::string describe(const Placement& p) {
    std::string text = "w";
    for (int i = 0; p.w[i] != 64; ++i) text += " " + std::to_string(p.w[i]);
    text += " b";
    for (int i = 0; p.b[i] != 64; ++i) text += " " + std::to_string(p.b[i]);
    return text;
  }

 private:
  PositionToIndexFn toIndex;
  IndexToPositionFn toPosition;
  uint32_t indexCount;
  bool pawnless;

  static bool kingsTouch(const Placement& p) {
    int df = int(p.w[0] % 8) - int(p.b[0] % 8), dr = int(p.w[0] / 8) - int(p.b[0] / 8);
    return std::max(std::abs(df), std::abs(dr)) <= 1;
  }
  static bool kingsOnOneLongDiagonal(const Placement& p) {
    auto onA1H8 = [](uint32_t s) { return s / 8 == s % 8; };
    auto onA8H1 = [](uint32_t s) { return s / 8 + s % 8 == 7; };
    return (onA1H8(p.w[0]) && onA1H8(p.b[0])) || (onA8H1(p.w[0]) && onA8H1(p.b[0]));
  }
  bool pawnPairOnMirrorSquares(const Placement& p) const {
    uint32_t pawns[5], count = 0;
    for (int i = 0; i < manCount; ++i) {
      if (letter[men[i]] != 'p') continue;
      if (men[i] >= 4) return false;
      pawns[count++] = square(p, men[i]);
    }
    return count == 2 && pawns[0] == mirrorFiles(pawns[1]);
  }
  // The same squares for every man, like men in any order.
  bool sameMen(const Placement& x, const Placement& y) const {
    for (int i = 0; i < manCount;) {
      int end = i + 1;
      while (end < manCount && letter[men[end]] == letter[men[i]] && men[end] == men[end - 1] + 1) ++end;
      uint32_t a[3], b[3];
      for (int k = i; k < end; ++k) a[k - i] = square(x, men[k]), b[k - i] = square(y, men[k]);
      if (!std::is_permutation(a, a + (end - i), b)) return false;
      i = end;
    }
    return true;
  }
};

// A failure for `p` unless it passes; the first five of a run are reported.
inline void expectPasses(const IndexChecker& checker, const Placement& p, const std::string& name, int& failures) {
  const std::string failure = checker.check(p);
  if (!failure.empty() && ++failures <= 5) ADD_FAILURE() << name << " " << IndexChecker::describe(p) << ": " << failure;
}

}  // namespace indextest
