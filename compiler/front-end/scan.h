// The model scanner: from source text to tokens, by longest match.
#pragma once

#include <cstddef>

#include "Positions.h"
#include "treefwd.h"

namespace oz {

// What travels with the last token. Position is that of its first byte.
struct scan_tScanAttribute {
  tPosition Position;
  union {
    tAsynt Symbol;  // id: its symbol information
    string Text;    // integer, real: the digits; string: the bytes between the quotes
  };
};

extern scan_tScanAttribute scan_Attribute;

// The text of the last token in the scanner's buffer; valid until the next token.
extern const char* scan_TokenPtr;
extern size_t scan_TokenLength;

// Starts on a file, behind the current one if there is one. A file that cannot be opened is fatal.
void scan_BeginFile(const char* name);

// The code of the next token, 0 at the end of the input. Without scan_BeginFile standard input is read.
int scan_GetToken();

// Ends the current file.
void scan_CloseFile();

// The attribute of a token that the parser inserts in a repair.
void scan_ErrorAttribute(int token, scan_tScanAttribute* attribute);

// Copy the last token's text, as it stands or in lower or upper case, into a buffer of scan_TokenLength + 1 bytes;
// the length.
size_t scan_GetWord(char* buffer);
size_t scan_GetLower(char* buffer);
size_t scan_GetUpper(char* buffer);

// Called around a whole scan. scan_BeginScanner makes the scanner ready for a fresh run in the same process.
void scan_BeginScanner();
void scan_CloseScanner();

// What internal failures leave through; initially Errors_Exit.
extern void (*scan_Exit)();

// Fills the index of predefined names that identifiers are looked up in.
void init_oz_index();

// The symbol information of an identifier that is no keyword: a copy of the predefined entry at this position, or a new
// SimpleSymbol. The name is copied.
tAsynt oz_find_symbol(const char* name, tPosition position);

}  // namespace oz
