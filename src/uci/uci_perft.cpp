#include "uci/uci_perft.h"

#include "board/move_text.h"
#include "diagnostics/perft.h"
#include "player/chess_player.h"

void writeUciPerft(std::ostream& out, ChessPlayer& player, uint32_t depth) {
  // The count is a measure of speed as well: the search tables' pages are
  // mapped first, as for divide.
  player.waitForTablePages();
  const RootMoveCounts writeLine = [&out](Move move, uint64_t count) {
    out << moveToString(move) << ": " << count << '\n';
  };
  PerftStats stats;
  const uint64_t leaves = countFromPosition(stats, *player.board, player.perft, depth, &writeLine);
  out << "\nNodes searched: " << leaves << '\n';
  out.flush();
}
