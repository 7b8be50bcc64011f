// The full-form scanner: from text such as Plus[a, Times[2, b]] to tokens that carry their tree nodes.
#pragma once

#include <cstddef>

#include "Positions.h"
#include "ozscanSource.h"
#include "treefwd.h"

namespace oz {

enum ffscan_tToken {
  fftEndOfFile = 0,
  fftReal = 1,     // ExactRealConst
  fftInteger = 2,  // ExactIntConst
  fftString = 3,   // StringConst
  fftSymbol = 4,   // Symbol
  fftOpen = 5,     // "["
  fftClose = 6,    // "]"
  fftComma = 7
};

// What travels with the last token. Position is that of its first byte.
struct ffscan_tScanAttribute {
  tPosition Position;
  tAsynt Node;  // of a constant or symbol
  string Text;  // the symbol's name, the constant's value, the spelling of the rest
};

extern ffscan_tScanAttribute ffscan_Attribute;

// The last token as it stands in the text, quotes included; valid until the next token.
extern const char* ffscan_TokenPtr;
extern size_t ffscan_TokenLength;

// Starts on the text that ffscan_SetString set, in front of what is being read if there is something. The name is not
// looked at.
void ffscan_BeginFile(const char* name);

// The next token, 0 at the end of the text. What is no token is reported and passed over.
int ffscan_GetToken();

// Leaves the current text.
void ffscan_CloseFile();

// What internal failures leave through; initially Errors_Exit.
extern void (*ffscan_Exit)();

}  // namespace oz
