// Thin layer over the operating system: descriptors, memory, process.
#pragma once

#include <cstddef>

namespace oz {

// A file descriptor; negative for a file that could not be opened.
using tFile = int;

// Open a file by name for reading or for writing (created and truncated). Result: the descriptor, or -1 with ErrNum()
// set. Descriptors are closed with Close; they are not inherited by programs that this one starts.
tFile OpenInput(const char* FileName);
tFile OpenOutput(const char* FileName);

// Read or write up to Size bytes. Result: the bytes moved, 0 at the end of the file, -1 on an error.
// An interrupted call is repeated; Write goes on until all is written or an error stops it.
long Read(tFile File, char* Buffer, size_t Size);
long Write(tFile File, const char* Buffer, size_t Size);

void Close(tFile File);

// Whether the descriptor is a character device, such as a terminal.
bool IsCharacterSpecial(tFile File);

// Fresh memory from the system, aligned for any object; null when there is none. SysFree gives a block of 256 KB or
// more back; smaller ones are cut from areas and stay.
char* SysAlloc(size_t ByteCount);
void SysFree(char* a);

// Processor time of this process in milliseconds.
long Time();

// The arguments that PutArgs stored; GetArgument copies number ArgNum into Argument (Size bytes, terminated).
void PutArgs(int Argc, char** Argv);
int GetArgCount();
void GetArgument(int ArgNum, char* Argument, size_t Size);

// The number of the last failed system call.
int ErrNum();

// Run a command by the shell; its exit status, or -1.
int System(const char* Command);

// End the process with a status.
[[noreturn]] void Exit(int Status);

// Set-up hook of the library; there is nothing to set up.
void BEGIN_System();

}  // namespace oz
