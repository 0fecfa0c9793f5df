#pragma once

// Builds the constant tables of the evaluation, each group once. Called when
// the first search thread is created, before any evaluation runs.
void initEvalTables();
