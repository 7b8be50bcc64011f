// Places in a source text: comparison and the form in which messages show them.
#include "Positions.h"

namespace oz {

int Compare(tPosition Position1, tPosition Position2) {
  if (Position1.Line != Position2.Line) return Position1.Line < Position2.Line ? -1 : 1;
  if (Position1.Column != Position2.Column) return Position1.Column < Position2.Column ? -1 : 1;
  return 0;
}

void WritePosition(FILE* File, tPosition Position) { std::fprintf(File, "%4u,%3u", Position.Line, Position.Column); }

}  // namespace oz
