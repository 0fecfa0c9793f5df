// The 25 index families, each described by the layout of its index: what
// leads (the king pair or the pawns) and which squares, pairs and triples
// follow. One template turns a layout into the two functions of the family.
#include "tablebase/index_family.h"
#include "tablebase/numbering_tables.h"

namespace {

// Places of the men in a position: the first list's king and up to three men,
// then the second list's king and one man.
enum Man : uint8_t { ManWhiteKing, ManWhite1, ManWhite2, ManWhite3, ManBlackKing, ManBlack1 };

enum IndexLead : uint8_t {
  LeadKingPair,         // KK: the kings in normal form, below 462
  LeadWhitePawn,        // P: slot of the White pawn
  LeadBlackPawn,        // Q: slot of the Black pawn
  LeadPawnAgainstPawn,  // S: P * 48 + the Black pawn
  LeadPawnPair,         // PP: two White pawns
  LeadFreePawnPair,     // FP: Q of the Black pawn * 1128 + two White pawns
  LeadPawnTriple,       // T: three White pawns
};

enum TermKind : uint8_t { TermSquare, TermPair, TermTriple };

struct IndexTerm {
  TermKind kind;
  Man men[3];
};

struct FamilyLayout {
  uint8_t whiteMen, blackMen;
  IndexLead lead;
  Man pawns[3];  // the lead's pawns; the first decides the mirror where one does
  uint8_t termCount;
  IndexTerm terms[3];
};

constexpr int pawnCount(IndexLead lead) {
  switch (lead) {
    case LeadKingPair: return 0;
    case LeadWhitePawn: case LeadBlackPawn: return 1;
    case LeadPawnAgainstPawn: case LeadPawnPair: return 2;
    default: return 3;
  }
}

constexpr uint32_t leadCount(IndexLead lead) {
  switch (lead) {
    case LeadKingPair: return kingPairCount;
    case LeadWhitePawn: case LeadBlackPawn: return pawnSlotCount;
    case LeadPawnAgainstPawn: return pawnSlotCount * 48;
    case LeadPawnPair: return pawnPairCount;
    case LeadFreePawnPair: return pawnSlotCount * freePawnPairCount;
    default: return pawnTripleCount;
  }
}

constexpr uint32_t termSize(TermKind kind) {
  return kind == TermSquare ? 64 : kind == TermPair ? pairCount : tripleCount;
}

constexpr uint32_t indexCountOf(const FamilyLayout& l) {
  uint32_t count = leadCount(l.lead) * (l.lead == LeadKingPair ? 1 : 64 * 64);
  for (int t = 0; t < l.termCount; ++t) count *= termSize(l.terms[t].kind);
  return count;
}

constexpr uint32_t sliceCountOf(const FamilyLayout& l) { return l.lead == LeadKingPair ? 1 : leadCount(l.lead); }

using Squares = uint32_t[6];

template <FamilyLayout L, typename Change>
inline void forEachMan(Squares& sq, Change change) {
  for (int i = 0; i < L.whiteMen; ++i) sq[i] = change(sq[i]);
  for (int i = 0; i < L.blackMen; ++i) sq[ManBlackKing + i] = change(sq[ManBlackKing + i]);
}

template <FamilyLayout L>
inline void mirrorAllFiles(Squares& sq) {
  forEachMan<L>(sq, mirrorFiles);
}

constexpr uint32_t fromH7(uint32_t s) { return (s ^ 63) - 8; }

// Mirrors the position as its pawns ask and gives the pawns' number, or false.
template <FamilyLayout L>
inline bool pawnLead(Squares& sq, uint32_t& lead) {
  constexpr Man p0 = L.pawns[0], p1 = L.pawns[1], p2 = L.pawns[2];
  for (int p = 0; p < pawnCount(L.lead); ++p)
    if (sq[L.pawns[p]] < 8 || sq[L.pawns[p]] > 55) return false;
  if constexpr (L.lead == LeadPawnTriple) {
    lead = pawnTripleIndex[sq[p0] - 8][sq[p1] - 8][sq[p2] - 8];
    if (lead == noNumber) {
      mirrorAllFiles<L>(sq);
      lead = pawnTripleIndex[sq[p0] - 8][sq[p1] - 8][sq[p2] - 8];
    }
    return lead != noNumber;
  } else if constexpr (L.lead == LeadPawnPair) {
    bool firstAnchors = isPawnPairAnchor(sq[p0], sq[p1]);
    if (onRightHalf(firstAnchors ? sq[p0] : sq[p1])) mirrorAllFiles<L>(sq);
    uint32_t anchor = firstAnchors ? sq[p0] : sq[p1], other = firstAnchors ? sq[p1] : sq[p0];
    lead = pawnPairIndex[whitePawnSlot(anchor)][mirrorRanks(other) - 8];
    return lead != noNumber;
  } else {
    if (onRightHalf(sq[p0])) mirrorAllFiles<L>(sq);
    if constexpr (L.lead == LeadWhitePawn) {
      lead = whitePawnSlot(sq[p0]);
    } else if constexpr (L.lead == LeadBlackPawn) {
      lead = blackPawnSlot(sq[p0]);
    } else if constexpr (L.lead == LeadPawnAgainstPawn) {
      lead = whitePawnSlot(sq[p0]) * 48 + sq[p1] - 8;
    } else {
      uint32_t pair = freePawnPairIndex[fromH7(sq[p1])][fromH7(sq[p2])];
      if (pair == noNumber) return false;
      lead = blackPawnSlot(sq[p0]) * freePawnPairCount + pair;
    }
    return true;
  }
}

template <FamilyLayout L>
bool positionToIndex(const uint32_t* w, const uint32_t* b, uint32_t& index) {
  index = noNumber;
  Squares sq = {};
  uint32_t all = 0;
  for (int i = 0; i < L.whiteMen; ++i) all |= sq[i] = w[i];
  for (int i = 0; i < L.blackMen; ++i) all |= sq[ManBlackKing + i] = b[i];
  if (all > 63) return false;

  uint32_t number;
  if constexpr (L.lead == LeadKingPair) {
    uint32_t flags = kingPairFlip[sq[ManBlackKing]][sq[ManWhiteKing]];
    forEachMan<L>(sq, [flags](uint32_t s) { return pieceFlip(s, flags); });
    number = kingPairIndex[sq[ManBlackKing]][sq[ManWhiteKing]];
    if (number == noNumber) return false;
  } else {
    uint32_t lead;
    if (!pawnLead<L>(sq, lead)) return false;
    number = (lead * 64 + sq[ManWhiteKing]) * 64 + sq[ManBlackKing];
  }
  for (int t = 0; t < L.termCount; ++t) {
    const IndexTerm& term = L.terms[t];
    uint32_t value = term.kind == TermSquare ? sq[term.men[0]]
                     : term.kind == TermPair ? pairIndex[sq[term.men[0]]][sq[term.men[1]]]
                                             : tripleIndex(sq[term.men[0]], sq[term.men[1]], sq[term.men[2]]);
    if (value == noNumber) return false;
    number = number * termSize(term.kind) + value;
  }
  index = number;
  return true;
}

template <FamilyLayout L>
bool indexToPosition(uint32_t index, uint32_t* w, uint32_t* b) {
  if (index >= indexCountOf(L)) return false;
  Squares sq = {};
  for (int t = L.termCount - 1; t >= 0; --t) {
    const IndexTerm& term = L.terms[t];
    uint32_t value = index % termSize(term.kind);
    index /= termSize(term.kind);
    if (term.kind == TermSquare) {
      sq[term.men[0]] = value;
    } else if (term.kind == TermPair) {
      sq[term.men[0]] = pairSquares[value].first;
      sq[term.men[1]] = pairSquares[value].second;
    } else {
      SquareTriple triple = tripleSquares(value);
      for (int i = 0; i < 3; ++i) sq[term.men[i]] = triple.squares[i];
    }
  }
  constexpr Man p0 = L.pawns[0], p1 = L.pawns[1], p2 = L.pawns[2];
  if constexpr (L.lead == LeadKingPair) {
    sq[ManBlackKing] = kingPairSquares[index].first;
    sq[ManWhiteKing] = kingPairSquares[index].second;
  } else {
    sq[ManBlackKing] = index % 64;
    sq[ManWhiteKing] = index / 64 % 64;
    index /= 64 * 64;
    if constexpr (L.lead == LeadWhitePawn) {
      sq[p0] = whitePawnSquare(index);
    } else if constexpr (L.lead == LeadBlackPawn) {
      sq[p0] = blackPawnSquare(index);
    } else if constexpr (L.lead == LeadPawnAgainstPawn) {
      sq[p0] = whitePawnSquare(index / 48);
      sq[p1] = index % 48 + 8;
    } else if constexpr (L.lead == LeadPawnPair) {
      sq[p0] = pawnPairSquares[index].first;
      sq[p1] = pawnPairSquares[index].second;
    } else if constexpr (L.lead == LeadFreePawnPair) {
      sq[p0] = blackPawnSquare(index / freePawnPairCount);
      sq[p1] = freePawnPairSquares[index % freePawnPairCount].first;
      sq[p2] = freePawnPairSquares[index % freePawnPairCount].second;
    } else {
      for (int i = 0; i < 3; ++i) sq[L.pawns[i]] = pawnTripleSquares[index].squares[i];
    }
  }
  for (int i = 0; i < L.whiteMen; ++i) w[i] = sq[i];
  for (int i = 0; i < L.blackMen; ++i) b[i] = sq[ManBlackKing + i];
  w[L.whiteMen] = b[L.blackMen] = 64;
  return true;
}

template <FamilyLayout L>
constexpr IndexFamily family(const char* name) {
  return {name, indexCountOf(L), sliceCountOf(L), L.whiteMen, L.blackMen, L.lead == LeadKingPair,
          &indexToPosition<L>, &positionToIndex<L>};
}

constexpr IndexTerm square(Man m) { return {TermSquare, {m, m, m}}; }
constexpr IndexTerm pair(Man m, Man n) { return {TermPair, {m, n, n}}; }
constexpr IndexTerm triple(Man m, Man n, Man o) { return {TermTriple, {m, n, o}}; }

constexpr Man W1 = ManWhite1, W2 = ManWhite2, W3 = ManWhite3, B1 = ManBlack1;

}  // namespace

constinit const IndexFamily indexFamilies[FamilyCount] = {
    family<FamilyLayout{2, 1, LeadKingPair, {}, 1, {square(W1)}}>("kxk"),
    family<FamilyLayout{2, 2, LeadKingPair, {}, 2, {square(W1), square(B1)}}>("kxky"),
    family<FamilyLayout{3, 1, LeadKingPair, {}, 1, {pair(W1, W2)}}>("kxxk"),
    family<FamilyLayout{3, 1, LeadKingPair, {}, 2, {square(W1), square(W2)}}>("kxyk"),
    family<FamilyLayout{4, 1, LeadKingPair, {}, 1, {triple(W1, W2, W3)}}>("kxxxk"),
    family<FamilyLayout{4, 1, LeadKingPair, {}, 2, {pair(W1, W2), square(W3)}}>("kxxyk"),
    family<FamilyLayout{4, 1, LeadKingPair, {}, 2, {pair(W2, W3), square(W1)}}>("kxyyk"),
    family<FamilyLayout{4, 1, LeadKingPair, {}, 3, {square(W1), square(W2), square(W3)}}>("kxyzk"),
    family<FamilyLayout{3, 2, LeadKingPair, {}, 2, {pair(W1, W2), square(B1)}}>("kxxky"),
    family<FamilyLayout{3, 2, LeadKingPair, {}, 3, {square(W1), square(W2), square(B1)}}>("kxykz"),
    family<FamilyLayout{2, 1, LeadWhitePawn, {W1}, 0, {}}>("kpk"),
    family<FamilyLayout{3, 1, LeadWhitePawn, {W2}, 1, {square(W1)}}>("kxpk"),
    family<FamilyLayout{2, 2, LeadBlackPawn, {B1}, 1, {square(W1)}}>("kxkp"),
    family<FamilyLayout{3, 1, LeadPawnPair, {W1, W2}, 0, {}}>("kppk"),
    family<FamilyLayout{2, 2, LeadPawnAgainstPawn, {W1, B1}, 0, {}}>("kpkp"),
    family<FamilyLayout{4, 1, LeadWhitePawn, {W3}, 1, {pair(W1, W2)}}>("kxxpk"),
    family<FamilyLayout{4, 1, LeadWhitePawn, {W3}, 2, {square(W1), square(W2)}}>("kxypk"),
    family<FamilyLayout{4, 1, LeadPawnPair, {W2, W3}, 1, {square(W1)}}>("kxppk"),
    family<FamilyLayout{3, 2, LeadWhitePawn, {W2}, 2, {square(W1), square(B1)}}>("kxpky"),
    family<FamilyLayout{3, 2, LeadPawnPair, {W1, W2}, 1, {square(B1)}}>("kppkx"),
    family<FamilyLayout{3, 2, LeadBlackPawn, {B1}, 1, {pair(W1, W2)}}>("kxxkp"),
    family<FamilyLayout{3, 2, LeadBlackPawn, {B1}, 2, {square(W1), square(W2)}}>("kxykp"),
    family<FamilyLayout{3, 2, LeadPawnAgainstPawn, {W2, B1}, 1, {square(W1)}}>("kxpkp"),
    family<FamilyLayout{3, 2, LeadFreePawnPair, {B1, W1, W2}, 0, {}}>("kppkp"),
    family<FamilyLayout{4, 1, LeadPawnTriple, {W1, W2, W3}, 0, {}}>("kpppk"),
};
