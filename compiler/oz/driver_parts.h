// What the files of the driver share: the arguments of a run, and the generation of one entity that they ask for.
#pragma once

namespace oz {

// Which entity a run generates.
enum code { no_code = 0, fun = 1, var = 2, eval = 3 };

// What the arguments ask for.
struct Options {
  bool remember_tree_flag = false;
  bool unparse_flag = false;
  bool query_tree_flag = false;
  bool daemon_flag = false;
  bool genmode_flag = false;
  bool parallel_flag = false;
  code codegen_flag = no_code;
  const char* codegen_name = nullptr;
  const char* codegen_eval_file_name = nullptr;
  const char* codegen_lang = "Fortran90";
  const char* output_file_name = nullptr;
  const char* tree_file_name = nullptr;
  const char* input_file_name = nullptr;
};

// Generates the entity as a file set beside the model's file. The model must have been kept. What fails is fatal.
void generate_entity(const Options& o);

}  // namespace oz
