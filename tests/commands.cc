// Runs link commands without a link: one command a line on standard input. An answer other than "OK" goes to standard
// output, behind the command.
//
//   compile MODEL ERRFILE [OPTION...]     open LANGUAGE FILE PARALLEL     close
//   variable [NAME...]     function NAME... [GENMODE]     evaluate NAME GENMODE BODY
//
// A name stands as the host would hold it: NAME is sent as Hold[NAME], and no name, which asks for all variables, as
// Hold[]. Several names are as many commands. Without a number GENMODE is 0.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "al_cmds.h"

namespace {

std::string word(std::istream& line) {
  std::string w;
  line >> w;
  return w;
}

std::string held(const std::string& name) { return "Hold[" + name + "]"; }

bool is_number(const std::string& w) { return !w.empty() && w.find_first_not_of("0123456789") == std::string::npos; }

std::string rest(std::istream& line) {
  std::string text;
  std::getline(line >> std::ws, text);
  return text;
}

void tell(const std::string& command, const std::string& answer) {
  if (answer != "OK") std::cout << command << "\n  " << answer << std::endl;
}

void generate(const std::string& command, std::istream& line) {
  std::vector<std::string> names;
  int genmode = 0;
  for (std::string w; line >> w;)
    if (is_number(w))
      genmode = std::stoi(w);
    else
      names.push_back(w);
  if (names.empty()) names.emplace_back();
  for (const std::string& name : names)
    tell(command + " " + name, command == "variable" ? oz::al_generate_variable(held(name).c_str())
                                                     : oz::al_generate_function(held(name).c_str(), genmode));
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
  if (command == "evaluate") {
    const std::string name = held(word(line));
    const int genmode = std::stoi(word(line));
    return oz::al_generate_evaluate_function(name.c_str(), rest(line).c_str(), genmode);
  }
  return "unknown command";
}

}  // namespace

int main() {
  for (std::string text; std::getline(std::cin, text);) {
    std::istringstream line(text);
    const std::string command = word(line);
    if (command.empty()) continue;
    if (command == "variable" || command == "function")
      generate(command, line);
    else
      tell(text, run(command, line));
  }
  return 0;
}
