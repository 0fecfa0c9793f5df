// Random games: what the report shows a user holds together, and a game
// stops before the end of the move record.
#include <memory>
#include <numeric>

#include "../board/board_test_support.h"
#include "board/draw_rules.h"
#include "board/fen_writer.h"
#include "diagnostics/random_games.h"
#include "../player/player_test_support.h"

namespace {

class RandomGames : public ::testing::Test, protected playertest::PlayerWithoutEngine {};

// The numbers on the line of `label` and on the `more` lines behind it; on a
// line with a colon only those behind the last colon.
std::vector<double> numbersAt(const std::string& report, const std::string& label, int more = 0) {
  const size_t at = report.find(label);
  EXPECT_NE(at, std::string::npos) << label;
  std::istringstream lines(at == std::string::npos ? "" : report.substr(at + label.size()));
  std::vector<double> numbers;
  std::string line;
  for (int i = 0; i <= more && std::getline(lines, line); ++i) {
    if (line.find(':') != std::string::npos) line.erase(0, line.rfind(':') + 1);
    for (char& ch : line) ch = ch == '[' || ch == ']' ? ' ' : ch;
    std::istringstream words(line);
    for (double x; words >> x;) numbers.push_back(x);
  }
  return numbers;
}

double sum(const std::vector<double>& v) { return std::accumulate(v.begin(), v.end(), 0.0); }

TEST_F(RandomGames, TheReportHoldsTogether) {
  std::srand(20261124);
  testing::internal::CaptureStdout();
  runRandomGames(player, player.randomGame, 200);
  const std::string report = testing::internal::GetCapturedStdout();
  EXPECT_EQ(report.find("# Playing 200 random games ...\n" + std::string(50, '#') + "\ncalculate average values ...\n"), 0u);
  EXPECT_EQ(numbersAt(report, "Total games:"), std::vector<double>{200});
  const double positions = numbersAt(report, "Total positions:").at(0), moves = numbersAt(report, "Avg. moves/game:").at(0);
  EXPECT_GT(positions, 1000);
  EXPECT_NEAR(moves, positions / 200, 0.005);
  // Each average is rounded to two places: six of them add up within 0.03.
  EXPECT_NEAR(sum(numbersAt(report, "Avg. moves of piece/game:")), moves, 0.03);
  const std::vector<double> captured = numbersAt(report, "Avg. captures of piece/game:"),
                            promoted = numbersAt(report, "Avg. promotions into piece/game:");
  EXPECT_NEAR(sum(captured), numbersAt(report, "Avg. captures/game:")[0] + numbersAt(report, "Avg. ep captures/game:")[0], 0.03);
  EXPECT_NEAR(sum(promoted), numbersAt(report, "Avg. promotions/game:")[0], 0.03);
  EXPECT_TRUE(captured.at(5) == 0 && promoted.at(0) == 0 && promoted.at(5) == 0);  // no king taken, no pawn or king made
  EXPECT_GT(numbersAt(report, "Avg. castlings/game:")[0] * numbersAt(report, "Avg. ep captures/game:")[0], 0);
  for (const char* colour : {"0", "1"}) {
    // A king in every position; no pawn on the first or last rank.
    EXPECT_EQ(numbersAt(report, "Avg. presence of " + std::string(colour) + " 6:", 9).back(), 100.0);
    const std::vector<double> pawns = numbersAt(report, "Avg. presence of " + std::string(colour) + " 1:", 9);
    EXPECT_EQ(sum({pawns.begin(), pawns.begin() + 8}) + sum({pawns.begin() + 56, pawns.begin() + 64}), 0.0);
  }
  for (const char* colour : {"white", "black"})
    EXPECT_NEAR(sum(numbersAt(report, "given number of " + std::string(colour) + " pieces:", 2)), 100, 0.8);
  EXPECT_NEAR(sum(numbersAt(report, "Game length:", 40)), 100, 0.2);
  EXPECT_TRUE(player.ply == 0 && !player.randomGame);

  // A game that would run past the end of the move record stops just before it.
  for (uint32_t left : {3u, 1u, 0u}) {
    auto stats = std::make_unique<RandomGameStats>();
    setupFromFen(*player.board, startPositionFen);
    player.ply = MaxGamePly - left;
    player.randomGame = true;
    playRandomGame(player, player.randomGame, *stats);
    EXPECT_TRUE(stats->positions == left && player.ply == MaxGamePly && stats->gameLength[MaxGamePly] == 1u) << left;
  }
}

// Random games from every position of perft960.epd (Chess960 starts of both
// kinds, middlegames) to their end, replayed: every position sound, the mover
// never left in check, and its FEN, written in Shredder form and read back,
// the same position with the same key. Castlings of both wings come up.
TEST_F(RandomGames, Chess960GamesPlayToTheirEnd) {
  player.randomGame = true;
  std::srand(960);
  uint64_t castlings[2] = {};
  for (const SuiteLine& line : readSuite("perft960.epd")) {
    std::string error;
    ASSERT_TRUE(setupChess960FromFen(*player.board, line.fen.c_str(), error)) << line.fen;
    player.ply = player.setupPly = 0;
    auto stats = std::make_unique<RandomGameStats>();
    playRandomGame(player, player.randomGame, *stats);
    auto b = std::make_unique<Board_0x88>();
    ASSERT_TRUE(setupChess960FromFen(*b, line.fen.c_str(), error));
    std::string failure;
    for (uint32_t i = 0; i < player.ply && failure.empty(); ++i) {
      const Move m = player.moveHistory[i];
      if (moveKind(m) == MoveCastling) ++castlings[moveDetail(m) & 1];
      const Color mover = Color(b->sideToMove);
      const uint8_t rights = b->castlingRights;
      if (!playMoves(*b, moveToString(m))) failure = "illegal move " + moveToString(m);
      const Square king = b->side[mover].square[0];
      Board_0x88 reread;
      if (!failure.empty()) break;
      if (mover == White ? isAttacked<Black>(*b, king) : isAttacked<White>(*b, king)) failure = "mover in check";
      else if (!sumsDisagree(*b, 2).empty()) failure = sumsDisagree(*b, 2);
      else if (!setupChess960FromFen(reread, positionToFen(*b).c_str(), error) ||
               reread.currentRecord().hashKey != b->currentRecord().hashKey || positionToFen(reread) != positionToFen(*b))
        failure = "FEN " + positionToFen(*b) + " " + error;
      else if (b->castlingRights & ~rights) failure = "a right came back";
      if (!failure.empty()) failure += " after " + moveToString(m) + " at ply " + std::to_string(i + 1);
    }
    EXPECT_EQ(failure, "") << line.fen;
    const MoveList list = legalMoves(*b);
    GameEndReason reason = ReasonNone;
    EXPECT_TRUE(list.count == 0 || isDrawByRule(*b, reason) || player.ply == MaxGamePly) << line.fen;
  }
  EXPECT_GT(castlings[0], 5u);
  EXPECT_GT(castlings[1], 5u);
}

}  // namespace
