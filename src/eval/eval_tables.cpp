#include "eval/eval_tables.h"

#include "eval/king_safety.h"
#include "eval/pawn_structure.h"

void initEvalTables() {
  initPawnStructureTables();
  initKingSafetyTables();
}
