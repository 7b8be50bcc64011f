// Runs link commands without a link: one command a line on standard input, each answer on standard output.
//
//   compile MODEL ERRFILE [OPTION...]     open LANGUAGE FILE PARALLEL     close
//   variable NAME     function NAME GENMODE     evaluate NAME GENMODE BODY
//
// A name stands as the host would hold it: NAME is sent as Hold[NAME].
#include <iostream>
#include <sstream>
#include <string>

#include "al_cmds.h"

namespace {

std::string word(std::istream& line) {
  std::string w;
  line >> w;
  return w;
}

std::string held(std::istream& line) { return "Hold[" + word(line) + "]"; }

int number(std::istream& line) {
  int n = 0;
  line >> n;
  return n;
}

std::string rest(std::istream& line) {
  std::string text;
  std::getline(line >> std::ws, text);
  return text;
}

std::string run(const std::string& command, std::istream& line) {
  if (command == "compile") {
    const std::string model = word(line), errfile = word(line);
    std::string options = rest(line);
    return oz::al_compile(model.c_str(), "", errfile.c_str(), options.data());
  }
  if (command == "open") {
    const std::string lang = word(line), file = word(line), parallel = word(line);
    return oz::al_open_file(lang.c_str(), file.c_str(), parallel.c_str());
  }
  if (command == "close") return oz::al_close_file();
  const std::string name = held(line);
  if (command == "variable") return oz::al_generate_variable(name.c_str());
  const int genmode = number(line);
  if (command == "function") return oz::al_generate_function(name.c_str(), genmode);
  if (command == "evaluate") return oz::al_generate_evaluate_function(name.c_str(), rest(line).c_str(), genmode);
  return "unknown command";
}

}  // namespace

int main() {
  for (std::string text; std::getline(std::cin, text);) {
    std::istringstream line(text);
    const std::string command = word(line);
    if (command.empty()) continue;
    std::cout << text << "\n  " << std::flush;
    std::cout << run(command, line) << std::endl;
  }
  return 0;
}
