/* AlgeLink: expressions and packets between two programs of one user on one machine.
 *
 * A link is opened in listen or connect mode over one of three devices (TCP, SharedMemory, IntraProcess), connected,
 * and then written and read one token at a time:
 *
 *   ALINK link = ALOpenString(env, "-linkmode listen -linkname 1742", &error);
 *   ALConnect(link);
 *   ALPutFunction(link, "List", 2);  ALPutInteger(link, 1);  ALPutString(link, "two");  ALEndPacket(link);
 *
 * Functions that return int give 1 for success and 0 for failure, unless said otherwise; ALError tells the reason. One
 * thread uses a link at a time. The message handler runs on a thread of the library.
 * The protocol and its limits stand in docs/link.md.
 */
#ifndef ALGELINK_H
#define ALGELINK_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ALLinkRecord* ALINK;
typedef struct ALEnvironmentRecord* ALEnvironment;
typedef struct ALHandlerRecord* ALMessageHandlerObject;

/* Called for each message of the peer, on the library's thread: it may set flags, and use nothing of the link. */
typedef void (*ALMessageHandler)(ALINK link, int message, int argument);

/* Called about every 100 ms while an operation waits; a nonzero result ends the wait, and the link counts as lost. */
typedef int (*ALYielder)(ALINK link);

enum { ALTerminateMessage = 1, ALInterruptMessage = 2, ALAbortMessage = 3 };

/* Codes of ALNextPacket. */
enum { ALReturnPacket = 3, ALCallPacket = 7, ALSuspendPacket = 17, ALResumePacket = 18, ALEvaluatePacket = 64 };

/* Tokens, as ALGetType gives them and ALPutNext takes them. */
enum {
  ALSymbolToken = 1,
  ALIntegerToken = 2,
  ALBigIntegerToken = 3,
  ALRealToken = 4,
  ALFunctionToken = 5,
  ALEndPacketToken = 6,
  ALStringToken = 34
};

/* Errors. Up to 9 they can be cleared, and the token that caused one has not been consumed; from 10 on they are final.
 */
enum {
  ALErrorNone = 0,
  ALErrorType = 1,
  ALErrorRange = 2,
  ALErrorNullByte = 3,
  ALErrorNoPacket = 4,
  ALErrorSequence = 5,
  ALErrorClosed = 10,
  ALErrorLost = 11,
  ALErrorStream = 12,
  ALErrorLimit = 13,
  ALErrorRefused = 14,
  ALErrorNameInUse = 15,
  ALErrorArguments = 16,
  ALErrorSystem = 17
};

/* ---- environments, opening, closing ---- */

/* A new environment; the parameters are not looked at. Null when memory is exhausted. */
ALEnvironment ALInitialize(const char* parameters);

/* Both close the links of the environment that are still open, and end it. */
void ALDeinitialize(ALEnvironment env);
void ALEnd(ALEnvironment env);

/* Open a link from -linkmode listen|connect, -linkname NAME, -linkprotocol TCP|SharedMemory|IntraProcess and -linkhost
 * HOST; other arguments are passed over. In listen mode the name is taken at once, without waiting for a peer; TCP port
 * 0 takes any free port. Null on failure, with the error in *error when that is not null. ALOpen opens in the newest
 * environment. */
ALINK ALOpen(int argc, const char* const* argv, int* error);
ALINK ALOpenArgcArgv(ALEnvironment env, char** argv, char** argv_end, int* error);
ALINK ALOpenString(ALEnvironment env, const char* commandline, int* error);

/* The name under which a peer finds the link: the port, or the name. Lives as long as the link. */
const char* ALName(ALINK link);

/* Completes the connection: waits until a peer has proven itself, or proves itself to the listener. */
int ALConnect(ALINK link);

/* Pushes out pending output, for two seconds at most, tells the peer, and frees the link. */
void ALClose(ALINK link);

/* ---- handlers and errors ---- */

/* The unused argument is there for bindings that carry a pointer. Handler objects live as long as the environment. */
ALMessageHandlerObject ALCreateMessageHandler(ALEnvironment env, ALMessageHandler handler, void* unused);
int ALSetMessageHandler(ALINK link, ALMessageHandlerObject handler);
int ALSetYieldFunction(ALINK link, ALYielder yielder);

int ALError(ALINK link);
/* True for no error and for one that can be cleared. */
int ALClearError(ALINK link);
const char* ALErrorMessage(ALINK link);
const char* ALErrorString(ALEnvironment env, int error);
/* Shows a text to the user, on standard error. */
void ALAlert(ALEnvironment env, const char* text);

/* ---- messages and packets ---- */

/* Sends a message out of band: it overtakes the tokens that wait. */
int ALPutMessage(ALINK link, int message, int argument);

/* 1 when there is input; 0 for a dead link and after a terminate message. Other messages do not end the wait. */
int ALWaitForLinkActivity(ALINK link);

/* Reads the head of the next packet; 0 on error. */
int ALNextPacket(ALINK link);
/* Skips the rest of the packet that is being read. */
int ALNewPacket(ALINK link);
/* Ends the packet that is being written. It is sent with the next ALFlush or operation that waits. */
int ALEndPacket(ALINK link);
int ALFlush(ALINK link);

/* ---- writing ---- */

int ALPutString(ALINK link, const char* text);
int ALPutByteString(ALINK link, const unsigned char* bytes, size_t n);
int ALPutSymbol(ALINK link, const char* name);
int ALPutInteger(ALINK link, int value);
int ALPutInteger64(ALINK link, int64_t value);
/* Decimal digits with an optional sign. */
int ALPutBigInteger(ALINK link, const char* digits);
int ALPutReal(ALINK link, double value);
/* A function head and its argument count; the arguments follow. */
int ALPutFunction(ALINK link, const char* head, int arguments);
/* A function whose head, any expression, follows before its arguments. */
int ALPutArgCount(ALINK link, int arguments);
/* List[v1, ..., vn]. */
int ALPutReal64List(ALINK link, const double* values, size_t n);
int ALPutInteger64List(ALINK link, const int64_t* values, size_t n);

/* ALPutNext(link, ALStringToken) begins a string in pieces; each piece tells the number of bytes that follow it. */
int ALPutNext(ALINK link, int token);
int ALPut8BitCharacters(ALINK link, size_t bytes_left, const unsigned char* bytes, size_t n);

/* ---- reading ---- */

/* The next token, not consumed; 0 on error. */
int ALGetType(ALINK link);
/* Strings and symbols belong to the link until they are released, or the link is closed. */
int ALGetString(ALINK link, const char** text);
void ALReleaseString(ALINK link, const char* text);
int ALGetByteString(ALINK link, const unsigned char** bytes, size_t* n);
void ALReleaseByteString(ALINK link, const unsigned char* bytes);
int ALGetSymbol(ALINK link, const char** name);
void ALReleaseSymbol(ALINK link, const char* name);
int ALGetInteger(ALINK link, int* value);
int ALGetInteger64(ALINK link, int64_t* value);
/* The digits of a big integer, released like a string. */
int ALGetBigInteger(ALINK link, const char** digits);
/* A real, or an integer as a real. */
int ALGetReal(ALINK link, double* value);
int ALGetFunction(ALINK link, const char** head, int* arguments);
/* A function's argument count; its head is the next expression. */
int ALGetArgCount(ALINK link, int* arguments);
/* A function with this head: its argument count. */
int ALTestHead(ALINK link, const char* head, int* arguments);
/* A list of numbers; the array belongs to the link until it is released. */
int ALGetReal64List(ALINK link, double** values, size_t* n);
void ALReleaseReal64List(ALINK link, double* values);

/* Copies one expression; both links may be the same. */
int ALTransferExpression(ALINK to, ALINK from);

#ifdef __cplusplus
}
#endif

#endif
