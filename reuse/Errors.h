// The message sink: one line per message, written at once or stored and sorted.
#pragma once

#include <cstdio>

#include "Positions.h"

namespace oz {

// Message classes; each has a head 12 characters wide.
inline constexpr int xxFatal = 1;
inline constexpr int xxRestriction = 2;
inline constexpr int xxError = 3;
inline constexpr int xxWarning = 4;
inline constexpr int xxRepair = 5;
inline constexpr int xxNote = 6;
inline constexpr int xxInformation = 7;

// Message codes of the parsers.
inline constexpr int xxNoText = 0;
inline constexpr int xxSyntaxError = 1;
inline constexpr int xxExpectedTokens = 2;
inline constexpr int xxRestartPoint = 3;
inline constexpr int xxTokenInserted = 4;
inline constexpr int xxTooManyErrors = 5;

// What the info pointer of a message points to.
inline constexpr int xxNone = 0;
inline constexpr int xxInteger = 1;
inline constexpr int xxShort = 2;
inline constexpr int xxLong = 3;
inline constexpr int xxReal = 4;
inline constexpr int xxBoolean = 5;
inline constexpr int xxCharacter = 6;
inline constexpr int xxString = 7;  // the info is the text itself, a const char*
inline constexpr int xxSet = 8;
inline constexpr int xxIdent = 9;

// What a class 1 message ends in. It must not return. Initially: exit with status 1.
extern void (*Errors_Exit)();

// Report a coded message, a coded message with an info value, a text, a text with an info value.
// A class 1 message does not return while messages are written at once or stored.
void ErrorMessage(int ErrorCode, int ErrorClass, tPosition Position);
void ErrorMessageI(int ErrorCode, int ErrorClass, tPosition Position, int InfoClass, const void* Info);
void Message(const char* ErrorText, int ErrorClass, tPosition Position);
void MessageI(const char* ErrorText, int ErrorClass, tPosition Position, int InfoClass, const void* Info);

// true: empty the table and store messages from now on; false: write them at once.
void StoreMessages(bool Store);

// Writes the stored messages to File, sorted by position and then by arrival.
void WriteMessages(FILE* File);

}  // namespace oz
