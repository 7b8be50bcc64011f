// The message sink. A message is one line:
//
//     12,  7: Error       syntax error
//   position  class head  code text or free text, then ": " and an info value if there is one
//
// It is written at once, or stored in a table of 100 and written sorted later. A class 1 message ends the run.
#include "Errors.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "Idents.h"
#include "Sets.h"
#include "StringMem.h"
#include "System.h"

namespace oz {

namespace {

void yyExit() { Exit(1); }

constexpr int kMaxStored = 100;

// The value behind the info pointer of a message, told apart by the info class.
union InfoValue {
  int Integer;
  short Short;
  long Long;
  double Real;
  bool Boolean;
  char Character;
  const char* Text;
  tSet Set;
  tIdent Ident;
};

struct tError {
  tPosition Position;
  bool IsErrorCode;  // ErrorCode is a message code, else the identifier of the text
  int ErrorNumber;   // of a stored message: its place in the order of arrival
  int ErrorCode;
  int ErrorClass;
  int InfoClass;
  InfoValue Info;
};

tError ErrorTable[kMaxStored + 1];  // from index 1
int MessageCount = 0;
bool IsStore = false;
FILE* Out = nullptr;

void WriteMessage(const tError& m);
void StoreMessage(const tError& m);
void (*HandleMessage)(const tError&) = WriteMessage;

[[noreturn]] void leave() {
  Errors_Exit();
  Exit(1);  // a hook that returns must not let the run go on
}

const char* const kClassHeads[] = {nullptr,        "Fatal       ", "Restriction ", "Error       ",
                                   "Warning     ", "Repair      ", "Note        ", "Information "};
const char* const kCodeTexts[] = {
    "", "syntax error", "expected tokens", "restart point", "token inserted ", "too many errors "};

void write_head(FILE* f, const tError& m) {
  WritePosition(f, m.Position);
  std::fputs(": ", f);
  if (m.ErrorClass >= xxFatal && m.ErrorClass <= xxInformation)
    std::fputs(kClassHeads[m.ErrorClass], f);
  else
    std::fprintf(f, "Error class: %d ", m.ErrorClass);
}

void write_code(FILE* f, int code) {
  if (code >= xxNoText && code <= xxTooManyErrors)
    std::fputs(kCodeTexts[code], f);
  else
    std::fprintf(f, " error code: %d", code);
}

void write_info(FILE* f, int info_class, const InfoValue& info) {
  if (info_class == xxNone) return;
  std::fputs(": ", f);
  switch (info_class) {
    case xxInteger: std::fprintf(f, "%d", info.Integer); break;
    case xxShort: std::fprintf(f, "%d", info.Short); break;
    case xxLong: std::fprintf(f, "%ld", info.Long); break;
    case xxReal: std::fprintf(f, "%e", info.Real); break;
    case xxBoolean: std::fputc(info.Boolean ? 'T' : 'F', f); break;
    case xxCharacter: std::fputc(info.Character, f); break;
    case xxString: std::fputs(info.Text, f); break;
    case xxSet: WriteSet(f, info.Set); break;
    case xxIdent: WriteIdent(f, info.Ident); break;
    default: std::fprintf(f, "info class: %d", info_class); break;
  }
}

void write_line(FILE* f, const tError& m) {
  write_head(f, m);
  if (m.IsErrorCode)
    write_code(f, m.ErrorCode);
  else
    WriteIdent(f, m.ErrorCode);
  write_info(f, m.InfoClass, m.Info);
  std::fputc('\n', f);
}

// The line is put together first, so that it goes out in one piece even on an unbuffered stream. What standard output
// still holds at the end of a run comes before the message that ends it.
void WriteMessage(const tError& m) {
  if (m.ErrorClass == xxFatal) std::fflush(stdout);
  char* line = nullptr;
  size_t length = 0;
  FILE* whole = open_memstream(&line, &length);
  write_line(whole ? whole : Out, m);
  if (whole) {
    std::fclose(whole);
    std::fwrite(line, 1, length, Out);
    std::free(line);
  }
  if (m.ErrorClass == xxFatal && !IsStore) leave();
}

InfoValue read_info(int info_class, const void* info) {
  InfoValue v;
  std::memset(&v, 0, sizeof v);
  switch (info_class) {
    case xxInteger: v.Integer = *static_cast<const int*>(info); break;
    case xxShort: v.Short = *static_cast<const short*>(info); break;
    case xxLong: v.Long = *static_cast<const long*>(info); break;
    case xxReal: v.Real = *static_cast<const double*>(info); break;
    case xxBoolean: v.Boolean = *static_cast<const char*>(info) != 0; break;
    case xxCharacter: v.Character = *static_cast<const char*>(info); break;
    case xxString: v.Text = static_cast<const char*>(info); break;
    case xxSet: v.Set = *static_cast<const tSet*>(info); break;
    case xxIdent: v.Ident = *static_cast<const tIdent*>(info); break;
    default: break;
  }
  return v;
}

// A stored message outlives what its info points to.
void own_info(tError* m) {
  if (m->InfoClass == xxString) m->Info.Text = TextSt(PutString(m->Info.Text, std::strlen(m->Info.Text) + 1));
  if (m->InfoClass == xxSet) {
    tSet copy;
    MakeSet(&copy, m->Info.Set.MaxElmt);
    Assign(&copy, m->Info.Set);
    m->Info.Set = copy;
  }
}

void drop_info(tError* m) {
  if (m->InfoClass == xxSet) ReleaseSet(&m->Info.Set);
  m->InfoClass = xxNone;
}

// From the 101st message on, the last entry says that there were too many; it keeps its position.
void StoreMessage(const tError& m) {
  if (MessageCount < kMaxStored) {
    tError* e = &ErrorTable[++MessageCount];
    *e = m;
    e->ErrorNumber = MessageCount;
    own_info(e);
  } else {
    tError* e = &ErrorTable[MessageCount];
    drop_info(e);
    e->IsErrorCode = true;
    e->ErrorCode = xxTooManyErrors;
    e->ErrorClass = xxRestriction;
  }
  if (m.ErrorClass == xxFatal) {
    WriteMessages(stderr);
    leave();
  }
}

bool IsLess(const tError& a, const tError& b) {
  int order = Compare(a.Position, b.Position);
  return order != 0 ? order < 0 : a.ErrorNumber < b.ErrorNumber;
}

void handle(bool is_code, int code, int error_class, tPosition position, int info_class, const void* info) {
  Out = stderr;
  HandleMessage({position, is_code, 0, code, error_class, info_class, read_info(info_class, info)});
}

}  // namespace

void (*Errors_Exit)() = yyExit;

void ErrorMessage(int ErrorCode, int ErrorClass, tPosition Position) {
  handle(true, ErrorCode, ErrorClass, Position, xxNone, nullptr);
}

void ErrorMessageI(int ErrorCode, int ErrorClass, tPosition Position, int InfoClass, const void* Info) {
  handle(true, ErrorCode, ErrorClass, Position, InfoClass, Info);
}

void Message(const char* ErrorText, int ErrorClass, tPosition Position) {
  MessageI(ErrorText, ErrorClass, Position, xxNone, nullptr);
}

void MessageI(const char* ErrorText, int ErrorClass, tPosition Position, int InfoClass, const void* Info) {
  handle(false, MakeIdent(ErrorText, std::strlen(ErrorText)), ErrorClass, Position, InfoClass, Info);
}

void StoreMessages(bool Store) {
  HandleMessage = Store ? StoreMessage : WriteMessage;
  IsStore = Store;
  if (!Store) return;
  while (MessageCount > 0) drop_info(&ErrorTable[MessageCount--]);
}

void WriteMessages(FILE* File) {
  std::sort(ErrorTable + 1, ErrorTable + 1 + MessageCount, IsLess);
  Out = File;
  for (int i = 1; i <= MessageCount; i++) WriteMessage(ErrorTable[i]);
  Out = stderr;
}

}  // namespace oz
