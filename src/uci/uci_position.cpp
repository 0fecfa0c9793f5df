#include "uci/uci_position.h"

#include <memory>

#include "board/fen.h"
#include "player/chess_player.h"

namespace {

// The game as it stood, to put back when a position is refused.
struct GameSnapshot {
  explicit GameSnapshot(const ChessPlayer& player)
      : board(std::make_unique<Board_0x88>(*player.board)),
        ply(player.ply),
        setupPly(player.setupPly),
        moves(player.moveHistory, player.moveHistory + player.ply),
        undos(player.undoHistory, player.undoHistory + player.ply) {}

  void restore(ChessPlayer& player) const {
    *player.board = *board;
    player.ply = ply;
    player.setupPly = setupPly;
    std::copy(moves.begin(), moves.end(), player.moveHistory);
    std::copy(undos.begin(), undos.end(), player.undoHistory);
  }

  std::unique_ptr<Board_0x88> board;
  uint32_t ply, setupPly;
  std::vector<Move> moves;
  std::vector<UndoRecord> undos;
};

// Sets up the position and plays the moves; false with the reason at the
// first thing refused, the game then half-changed.
bool applyPosition(ChessPlayer& player, const std::vector<std::string>& words, bool chess960, std::string& error,
                   std::string& notes) {
  size_t next = 1;
  FenRepairs repairs;
  if (words.empty() || (words[0] != "startpos" && words[0] != "fen")) {
    error = "expected startpos or fen";
    return false;
  }
  std::string reason;
  if (words[0] == "startpos") {
    if (chess960)
      setupChess960FromFen(*player.board, startPositionFen, reason);
    else
      setupFromFen(*player.board, startPositionFen);
  } else {
    std::vector<std::string> fields;
    while (next < words.size() && words[next] != "moves") fields.push_back(words[next++]);
    std::string fen;
    for (const std::string& field : fields) fen += (fen.empty() ? "" : " ") + field;
    if (chess960 ? !setupChess960FromFen(*player.board, fen.c_str(), reason)
                 : !setPositionFromWords(*player.board, fields, &repairs)) {
      error = "the board refuses the FEN '" + fen + "'" + (reason.empty() ? "" : ": " + reason);
      return false;
    }
  }
  player.ply = 0;
  player.setupPly = 0;
  if (!player.hasPlayablePosition()) {
    error = "the position can't be played: a side lacks its king or has too many pieces, a pawn stands on its "
            "first or last rank, or the side not to move is in check";
    return false;
  }
  notes = describeRepairs(repairs);
  if (next < words.size() && words[next] != "moves") {
    error = "expected moves, found '" + words[next] + "'";
    return false;
  }
  for (size_t i = next + 1; i < words.size(); ++i) {
    Move move = NoMove;
    if (!player.parseUserMove(words[i], move)) {
      error = "illegal move '" + words[i] + "' (move " + std::to_string(i - next) + " of the list)";
      return false;
    }
    if (!player.recordMove(move)) {
      error = "the game is too long to record at move '" + words[i] + "'";
      return false;
    }
  }
  return true;
}

}  // namespace

bool setUciPosition(ChessPlayer& player, const std::vector<std::string>& words, bool chess960, std::string& error,
                    std::string& notes) {
  const GameSnapshot snapshot(player);
  if (applyPosition(player, words, chess960, error, notes)) return true;
  snapshot.restore(player);
  notes.clear();
  return false;
}
