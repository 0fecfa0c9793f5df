#include "uci/uci_options.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "player/chess_player.h"
#include "player/engine_settings.h"

namespace {

std::string lowerCase(std::string text) {
  for (char& c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool readSize(const std::string& text, long long minimum, long long maximum, long long& value) {
  errno = 0;
  char* end = nullptr;
  value = std::strtoll(text.c_str(), &end, 10);
  return !text.empty() && errno == 0 && *end == '\0' && value >= minimum && value <= maximum;
}

std::string spin(const char* name, long long value, long long minimum, long long maximum) {
  return std::string("option name ") + name + " type spin default " + std::to_string(value) + " min " +
         std::to_string(minimum) + " max " + std::to_string(maximum) + "\n";
}

std::string text(const char* name, const std::string& value) {
  // A UCI string option has no way to show an empty default but this word.
  return std::string("option name ") + name + " type string default " + (value.empty() ? "<empty>" : value) + "\n";
}

}  // namespace

void writeUciOptions(std::ostream& out, const UciSettings& settings) {
  const ChessPlayer& player = settings.player;
  out << spin("Hash", player.ttHashSizeMB, 1, MaxSettingSizeMB)
      << spin("Threads", player.requestedCores, 1, player.maxCores)
      << spin("PawnHash", player.pawnHashSizeMB, 1, MaxSettingSizeMB)
      << "option name OwnBook type check default " << (settings.ownBook ? "true" : "false") << "\n"
      << text("BookFile", settings.player.book.currentPath()) << text("GaviotaTbPath", player.gtbPath)
      << spin("GaviotaTbCache", player.gtbCacheSizeMB, 0, MaxSettingSizeMB)
      << spin("MultiPV", settings.multiPv, 1, UciSettings::MaxMultiPv)
      << spin("Move Overhead", settings.moveOverheadMs, 0, UciSettings::MaxMoveOverheadMs)
      << "option name Ponder type check default " << (settings.ponder ? "true" : "false") << "\n"
      << "option name Clear Hash type button\n"
      << "option name UCI_Chess960 type check default " << (settings.chess960 ? "true" : "false") << "\n";
}

bool setUciOption(UciSettings& settings, const std::string& name, const std::string& givenValue, bool searching,
                  std::string& error) {
  ChessPlayer& player = settings.player;
  const std::string key = lowerCase(name);
  const std::string value = givenValue == "<empty>" ? std::string() : givenValue;
  long long size = 0;
  auto outOfRange = [&](long long minimum, long long maximum) {
    error = "option " + name + " not changed: value '" + givenValue + "' is not a number from " +
            std::to_string(minimum) + " to " + std::to_string(maximum);
    return false;
  };

  if (key == "hash" || key == "pawnhash") {
    if (!readSize(value, 1, MaxSettingSizeMB, size)) return outOfRange(1, MaxSettingSizeMB);
    (key == "hash" ? player.ttHashSizeMB : player.pawnHashSizeMB) = uint32_t(size);
    return true;
  }
  if (key == "threads") {
    if (!readSize(value, 1, player.maxCores, size)) return outOfRange(1, player.maxCores);
    player.requestedCores = uint32_t(size);
    return true;
  }
  if (key == "multipv") {
    if (!readSize(value, 1, UciSettings::MaxMultiPv, size)) return outOfRange(1, UciSettings::MaxMultiPv);
    settings.multiPv = uint32_t(size);
    return true;
  }
  if (key == "move overhead") {
    if (!readSize(value, 0, UciSettings::MaxMoveOverheadMs, size)) return outOfRange(0, UciSettings::MaxMoveOverheadMs);
    settings.moveOverheadMs = size;
    return true;
  }
  if (key == "ownbook" || key == "ponder" || key == "uci_chess960") {
    const std::string flag = lowerCase(value);
    if (flag != "true" && flag != "false") {
      error = "option " + name + " not changed: value '" + givenValue + "' is neither true nor false";
      return false;
    }
    // Chess960 takes effect with the next position.
    (key == "ownbook" ? settings.ownBook : key == "ponder" ? settings.ponder : settings.chess960) = flag == "true";
    return true;
  }
  if (key == "clear hash") {
    // The search writes the tables while it runs.
    if (searching) {
      error = "option " + name + " not changed during a search";
      return false;
    }
    player.clearSearchMemory();
    return true;
  }
  if (key == "bookfile" || key == "gaviotatbpath") {
    if (value.size() > 255) {
      error = "option " + name + " not changed: the path is longer than 255 characters";
      return false;
    }
    if (key == "bookfile") {
      player.book.setPath(value.c_str());
      return true;
    }
  }
  if (key == "gaviotatbpath" || key == "gaviotatbcache") {
    // The search reads the tablebases while it runs.
    if (searching) {
      error = "option " + name + " not changed during a search";
      return false;
    }
    if (key == "gaviotatbpath") {
      player.initTablebasesOfType("gaviota", value.c_str());
      return true;
    }
    if (!readSize(value, 0, MaxSettingSizeMB, size)) return outOfRange(0, MaxSettingSizeMB);
    player.gtbCacheSizeMB = uint32_t(size);
    // Tablebases not yet in use take the size when a path is set.
    if (player.tablebases->available.load(std::memory_order_relaxed)) player.reinitTablebases();
    return true;
  }
  error = "unknown option " + name;
  return false;
}
