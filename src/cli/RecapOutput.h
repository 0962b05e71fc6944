#pragma once

#include "cli/CommandRun.h"
#include "recap/Recap.h"

#include <vector>

namespace kestrant {

/// Carries out the command "recap" and ends the run: counts of completed reminders, in all periods or in the
/// one that was asked for. `records` are the ledger's, in order of their dates.
void printRecap(CommandRun& run, const std::vector<CompletionRecord>& records);

}  // namespace kestrant
