// Key files: who can read the listener's file is the listener's user.
//
// Each listener makes 64 random bytes and keeps them in a file of the user's own folder while it has its name. The file
// is locked as long as its owner lives, so two listeners of one user never share a name, and a file that a killed
// listener left behind is taken over.
#pragma once

#include <string>

namespace algelink {

constexpr size_t kKeySize = 64;
constexpr size_t kProofSize = 32;  // the connector proves itself with the first half, the listener with the second

struct KeyFile {
  int lock = -1;
  std::string path;
  unsigned char key[kKeySize] = {};
};

// The folder of sockets and keys, made when it is missing and wanted; false when it cannot be trusted.
bool key_folder(std::string* folder, bool make);

// Takes a name such as "tcp-1742" with fresh keys; an error code.
int make_key_file(const std::string& name, KeyFile* file);
// Reads the keys of another listener; an error code.
int read_key_file(const std::string& name, KeyFile* file);
void remove_key_file(KeyFile* file);

bool same_proof(const unsigned char* a, const unsigned char* b);

}  // namespace algelink
