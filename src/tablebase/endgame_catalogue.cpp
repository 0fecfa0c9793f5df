#include "tablebase/endgame_catalogue.h"

#include <cstring>

EndgameRow endgameCatalogue[endgameCount + 1] = {
    {0, "kqk", FamilyKxk}, {1, "krk", FamilyKxk}, {2, "kbk", FamilyKxk},
    {3, "knk", FamilyKxk}, {4, "kpk", FamilyKpk}, {5, "kqkq", FamilyKxky},
    {6, "kqkr", FamilyKxky}, {7, "kqkb", FamilyKxky}, {8, "kqkn", FamilyKxky},
    {9, "krkr", FamilyKxky}, {10, "krkb", FamilyKxky}, {11, "krkn", FamilyKxky},
    {12, "kbkb", FamilyKxky}, {13, "kbkn", FamilyKxky}, {14, "knkn", FamilyKxky},
    {15, "kqqk", FamilyKxxk}, {16, "kqrk", FamilyKxyk}, {17, "kqbk", FamilyKxyk},
    {18, "kqnk", FamilyKxyk}, {19, "krrk", FamilyKxxk}, {20, "krbk", FamilyKxyk},
    {21, "krnk", FamilyKxyk}, {22, "kbbk", FamilyKxxk}, {23, "kbnk", FamilyKxyk},
    {24, "knnk", FamilyKxxk}, {25, "kqkp", FamilyKxkp}, {26, "krkp", FamilyKxkp},
    {27, "kbkp", FamilyKxkp}, {28, "knkp", FamilyKxkp}, {29, "kqpk", FamilyKxpk},
    {30, "krpk", FamilyKxpk}, {31, "kbpk", FamilyKxpk}, {32, "knpk", FamilyKxpk},
    {33, "kppk", FamilyKppk}, {34, "kpkp", FamilyKpkp}, {35, "kqqqk", FamilyKxxxk},
    {36, "kqqrk", FamilyKxxyk}, {37, "kqqbk", FamilyKxxyk}, {38, "kqqnk", FamilyKxxyk},
    {39, "kqrrk", FamilyKxyyk}, {40, "kqrbk", FamilyKxyzk}, {41, "kqrnk", FamilyKxyzk},
    {42, "kqbbk", FamilyKxyyk}, {43, "kqbnk", FamilyKxyzk}, {44, "kqnnk", FamilyKxyyk},
    {45, "krrrk", FamilyKxxxk}, {46, "krrbk", FamilyKxxyk}, {47, "krrnk", FamilyKxxyk},
    {48, "krbbk", FamilyKxyyk}, {49, "krbnk", FamilyKxyzk}, {50, "krnnk", FamilyKxyyk},
    {51, "kbbbk", FamilyKxxxk}, {52, "kbbnk", FamilyKxxyk}, {53, "kbnnk", FamilyKxyyk},
    {54, "knnnk", FamilyKxxxk}, {55, "kqqkq", FamilyKxxky}, {56, "kqqkr", FamilyKxxky},
    {57, "kqqkb", FamilyKxxky}, {58, "kqqkn", FamilyKxxky}, {59, "kqrkq", FamilyKxykz},
    {60, "kqrkr", FamilyKxykz}, {61, "kqrkb", FamilyKxykz}, {62, "kqrkn", FamilyKxykz},
    {63, "kqbkq", FamilyKxykz}, {64, "kqbkr", FamilyKxykz}, {65, "kqbkb", FamilyKxykz},
    {66, "kqbkn", FamilyKxykz}, {67, "kqnkq", FamilyKxykz}, {68, "kqnkr", FamilyKxykz},
    {69, "kqnkb", FamilyKxykz}, {70, "kqnkn", FamilyKxykz}, {71, "krrkq", FamilyKxxky},
    {72, "krrkr", FamilyKxxky}, {73, "krrkb", FamilyKxxky}, {74, "krrkn", FamilyKxxky},
    {75, "krbkq", FamilyKxykz}, {76, "krbkr", FamilyKxykz}, {77, "krbkb", FamilyKxykz},
    {78, "krbkn", FamilyKxykz}, {79, "krnkq", FamilyKxykz}, {80, "krnkr", FamilyKxykz},
    {81, "krnkb", FamilyKxykz}, {82, "krnkn", FamilyKxykz}, {83, "kbbkq", FamilyKxxky},
    {84, "kbbkr", FamilyKxxky}, {85, "kbbkb", FamilyKxxky}, {86, "kbbkn", FamilyKxxky},
    {87, "kbnkq", FamilyKxykz}, {88, "kbnkr", FamilyKxykz}, {89, "kbnkb", FamilyKxykz},
    {90, "kbnkn", FamilyKxykz}, {91, "knnkq", FamilyKxxky}, {92, "knnkr", FamilyKxxky},
    {93, "knnkb", FamilyKxxky}, {94, "knnkn", FamilyKxxky}, {95, "kqqpk", FamilyKxxpk},
    {96, "kqrpk", FamilyKxypk}, {97, "kqbpk", FamilyKxypk}, {98, "kqnpk", FamilyKxypk},
    {99, "krrpk", FamilyKxxpk}, {100, "krbpk", FamilyKxypk}, {101, "krnpk", FamilyKxypk},
    {102, "kbbpk", FamilyKxxpk}, {103, "kbnpk", FamilyKxypk}, {104, "knnpk", FamilyKxxpk},
    {105, "kqppk", FamilyKxppk}, {106, "krppk", FamilyKxppk}, {107, "kbppk", FamilyKxppk},
    {108, "knppk", FamilyKxppk}, {109, "kqpkq", FamilyKxpky}, {110, "kqpkr", FamilyKxpky},
    {111, "kqpkb", FamilyKxpky}, {112, "kqpkn", FamilyKxpky}, {113, "krpkq", FamilyKxpky},
    {114, "krpkr", FamilyKxpky}, {115, "krpkb", FamilyKxpky}, {116, "krpkn", FamilyKxpky},
    {117, "kbpkq", FamilyKxpky}, {118, "kbpkr", FamilyKxpky}, {119, "kbpkb", FamilyKxpky},
    {120, "kbpkn", FamilyKxpky}, {121, "knpkq", FamilyKxpky}, {122, "knpkr", FamilyKxpky},
    {123, "knpkb", FamilyKxpky}, {124, "knpkn", FamilyKxpky}, {125, "kppkq", FamilyKppkx},
    {126, "kppkr", FamilyKppkx}, {127, "kppkb", FamilyKppkx}, {128, "kppkn", FamilyKppkx},
    {129, "kqqkp", FamilyKxxkp}, {130, "kqrkp", FamilyKxykp}, {131, "kqbkp", FamilyKxykp},
    {132, "kqnkp", FamilyKxykp}, {133, "krrkp", FamilyKxxkp}, {134, "krbkp", FamilyKxykp},
    {135, "krnkp", FamilyKxykp}, {136, "kbbkp", FamilyKxxkp}, {137, "kbnkp", FamilyKxykp},
    {138, "knnkp", FamilyKxxkp}, {139, "kqpkp", FamilyKxpkp}, {140, "krpkp", FamilyKxpkp},
    {141, "kbpkp", FamilyKxpkp}, {142, "knpkp", FamilyKxpkp}, {143, "kppkp", FamilyKppkp},
    {144, "kpppk", FamilyKpppk},
    {},
};

namespace {

// The row of the last successful search; any value leads to the right answer,
// so threads share it without ordering.
std::atomic<int32_t> lastFound{0};

// Name of two code lists, or false if a code isn't a piece or the name is longer
// than any endgame's.
bool endgameName(const uint8_t* whiteCodes, const uint8_t* blackCodes, char (&name)[8]) {
  constexpr char letters[] = "-pnbrqk";
  size_t length = 0;
  for (const uint8_t* codes : {whiteCodes, blackCodes}) {
    for (; *codes != 0; ++codes) {
      if (*codes > 6 || length == 7) return false;
      name[length++] = letters[*codes];
    }
  }
  name[length] = 0;
  return true;
}

}  // namespace

bool findEndgame(const uint8_t* whiteCodes, const uint8_t* blackCodes, int32_t& id) {
  char name[8];
  if (!endgameName(whiteCodes, blackCodes, name)) return false;
  int32_t last = lastFound.load(std::memory_order_relaxed);
  if (std::strcmp(endgameCatalogue[last].name, name) == 0) {
    id = last;
    return true;
  }
  for (int32_t row = 0; endgameCatalogue[row].name != nullptr; ++row) {
    if (std::strcmp(endgameCatalogue[row].name, name) == 0) {
      lastFound.store(row, std::memory_order_relaxed);
      id = row;
      return true;
    }
  }
  return false;
}
