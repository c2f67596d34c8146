#pragma once

#include <variant>

#include "tools/convert.h"
#include "tools/look.h"
#include "tools/rows.h"
#include "tools/summary.h"
#include "tools/tree.h"

namespace numera::tools {

enum class Command { kTypes, kHead, kTail, kShow, kSummary, kTree, kConvert };

/// What the program is asked to do. Every command uses `convert.paths` and `convert.source`.
struct Arguments {
  Command command = Command::kShow;
  ConvertOptions convert;
  TypesOptions types;
  RowsOptions rows;
  SummaryOptions summary;
  TreeOptions tree;
};

/// Reads the command line. Returns an exit status if that is all: after help and after what the
/// program writes about itself, which go to standard output, and after wrong usage, which standard
/// error tells.
std::variant<Arguments, int> read_arguments(int argc, char** argv);

}  // namespace numera::tools
