// Material balance, phase, signatures and mating material from piece counts.
#include <gtest/gtest.h>

#include "eval/material.h"
#include "eval_test_support.h"

namespace {

MaterialInfo materialOf(const std::string& fen) {
  auto board = evaltest::boardFrom(fen);
  MaterialInfo info;
  computeMaterial(info, *board);
  return info;
}

TEST(MaterialTest, StartPosition) {
  MaterialInfo info = materialOf(startPositionFen);
  EXPECT_EQ(info.material, (ScorePair{0, 0}));
  EXPECT_EQ(info.phase, 24);
  EXPECT_TRUE(info.canWin[White]);
  EXPECT_TRUE(info.canWin[Black]);
  for (Color c : {White, Black}) {
    MaterialSignature sig = info.signature[c];
    EXPECT_EQ(signatureField(sig, SigPawns), 8);
    EXPECT_EQ(signatureField(sig, SigKnights), 2);
    EXPECT_EQ(signatureField(sig, SigBishops), 2);
    EXPECT_EQ(signatureField(sig, SigRooks), 2);
    EXPECT_EQ(signatureField(sig, SigQueens), 1);
    EXPECT_EQ(signatureField(sig, SigMinors), 4);
    EXPECT_EQ(signatureField(sig, SigMajors), 3);
    EXPECT_EQ(signatureField(sig, SigMen), 15);
  }
}

TEST(MaterialTest, SignatureSeesPromotedPiecesAndOnlyPawns) {
  // A second queen and a third knight in pawn slots still count by type.
  MaterialInfo info = materialOf("4k3/p7/8/8/8/8/1PN5/QNNQK3 w - - 0 1");
  MaterialSignature w = info.signature[White];
  EXPECT_EQ(signatureField(w, SigQueens), 2);
  EXPECT_EQ(signatureField(w, SigKnights), 3);
  EXPECT_EQ(signatureField(w, SigMinors), 3);
  EXPECT_EQ(signatureField(w, SigMajors), 2);
  EXPECT_EQ(signatureField(w, SigMen), 6);
  MaterialSignature b = info.signature[Black];
  EXPECT_EQ(signatureField(b, SigMen), signatureField(b, SigPawns));  // nothing but pawns
}

TEST(MaterialTest, PhaseCountsOfficersOnlyAndIsCapped) {
  EXPECT_EQ(materialOf("4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - - 0 1").phase, 0);
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/R3K2R w - - 0 1").phase, 4);
  EXPECT_EQ(materialOf("3qk3/8/8/8/8/8/8/1N2KB2 w - - 0 1").phase, 6);
  // Promoted queens in place of the rooks: 8 + 0 + 4 * 6 = 32, held at 24.
  EXPECT_EQ(materialOf("qnbqkbnq/pppppppp/8/8/8/8/PPPPPPPP/QNBQKBNQ w - - 0 1").phase, 24);
}

TEST(MaterialTest, ValuesAndAdjustments) {
  // Rook with no own pawn gains 12 * 5.
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/R3K3 w - - 0 1").material, (ScorePair{560, 560}));
  // The queen alone has different halves.
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/Q3K3 w - - 0 1").material, (ScorePair{1104, 1101}));
  EXPECT_EQ(materialOf("q3k3/8/8/8/8/8/8/4K3 w - - 0 1").material, (ScorePair{-1104, -1101}));
  // Knight with eight own pawns gains 18; Black's rook with eight pawns loses 36.
  EXPECT_EQ(materialOf("4k3/pppppppp/8/8/8/8/PPPPPPPP/1N2K3 w - - 0 1").material, (ScorePair{343, 343}));
  EXPECT_EQ(materialOf("r3k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - - 0 1").material, (ScorePair{-464, -464}));
  // Exactly five own pawns: no adjustment; the other side's pawns don't matter.
  EXPECT_EQ(materialOf("4k3/pppppppp/8/8/8/8/PPPPP3/RN2K3 w - - 0 1").material,
            (ScorePair{825 - 300, 825 - 300}));
  // Lone knight loses 30.
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/1N2K3 w - - 0 1").material, (ScorePair{295, 295}));
}

TEST(MaterialTest, BishopPairByCountNotByShade) {
  // a1 and c1 are of one shade: still a pair.
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/B1B1K3 w - - 0 1").material, (ScorePair{700, 700}));
  EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/2B1KB2 w - - 0 1").material, (ScorePair{700, 700}));
  // Three bishops get the bonus once.
  EXPECT_EQ(materialOf("4k3/8/8/8/8/4B3/8/B1B1K3 w - - 0 1").material, (ScorePair{1025, 1025}));
  EXPECT_EQ(materialOf("2b1kb2/8/8/8/8/8/8/4K3 w - - 0 1").material, (ScorePair{-700, -700}));
  EXPECT_EQ(materialOf("2b1kb2/8/8/8/8/8/8/2B1KB2 w - - 0 1").material, (ScorePair{0, 0}));
}

TEST(MaterialTest, MatingMaterial) {
  struct Case {
    const char* fen;
    bool white, black;
  } cases[] = {
      {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", false, false},
      {"4k3/8/8/8/8/8/8/1N2K3 w - - 0 1", false, false},
      {"4k3/8/8/8/8/8/8/2B1K3 w - - 0 1", false, false},
      {"4k3/8/8/8/8/8/8/1N2K1N1 w - - 0 1", false, false},
      {"4k3/8/8/8/8/8/8/1NB1K3 w - - 0 1", true, false},
      {"4k3/8/8/8/8/8/8/2B1KB2 w - - 0 1", true, false},
      {"4k3/8/8/8/8/8/8/1NN1K1N1 w - - 0 1", true, false},
      {"4k3/8/8/8/8/8/P7/4K3 w - - 0 1", true, false},
      {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", true, false},
      {"4k3/8/8/8/8/8/8/Q3K3 w - - 0 1", true, false},
      {"2b1k3/7p/8/8/8/8/8/1N2K3 w - - 0 1", false, true},
      {"1n2k1n1/8/8/8/8/8/8/1B2K3 b - - 0 1", false, false},
  };
  for (const Case& c : cases) {
    MaterialInfo info = materialOf(c.fen);
    EXPECT_EQ(info.canWin[White], c.white) << c.fen;
    EXPECT_EQ(info.canWin[Black], c.black) << c.fen;
  }
}

}  // namespace
