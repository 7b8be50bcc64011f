// The compiler as a program of the host: announces the link commands, takes call packets and answers them.
#pragma once

#include <atomic>

#include "algelink.h"

namespace oz {

// The link of the current call; null before the first one.
extern ALINK stdlink;

// The environment, the message handler (null: the default one) and the yield function (null: none) of ALMain.
extern ALEnvironment stdenv;
extern ALMessageHandlerObject stdhandler;
extern ALYielder stdyielder;

// Set by the message handler, on the link's thread.
extern std::atomic<int> ALAbort;  // the host asked to abort the current command
extern std::atomic<int> ALDone;   // the host asked the program to end

// A command: the trampoline reads its arguments, runs it and puts the answer.
struct func {
  int f_nargs;  // argument count; negative turns the test off
  int manual;   // 0: the count must match; else it is a minimum
  int (*f_func)(ALINK mlp);
  const char* f_name;
};

// Connects and announces the commands.
int ALInstall(ALINK mlp);

// Runs the command that a call packet asks for.
int ALDoCallPacket(ALINK mlp);
int _ALDoCallPacket(ALINK mlp, const func* functable, int nfuncs);

// Sends a text of a table of null-terminated groups of pieces, itself ended by an empty group.
int _doevalstr(ALINK mlp, const char* const* table, int n);
int _definepattern(ALINK mlp, const char* patt, const char* args, int func_n);

// Answers call packets until something else comes: the code of the last packet, or 0.
int ALAnswer(ALINK mlp);

// ALAnswer, refusing to be the host's front end when it asks for that.
void ServeLink(ALINK mlp);

// Sends a text for evaluation; the second also waits for the result and drops it.
int ALEvaluate(ALINK mlp, const char* s);
int ALEvaluateString(ALINK mlp, const char* s);

// Sets ALAbort and ALDone as the message asks.
void ALDefaultHandler(ALINK mlp, int message, int n);

// The whole life of an installed program; 0 when a terminate message ended it, else 1.
int _ALMain(char** argv, char** argv_end, const char* commandline);
int ALMain(int argc, char** argv);
int ALMainString(const char* commandline);
int ALMainArgv(char** argv, char** argv_end);

}  // namespace oz
