// Lists of assignments for graphs: "x=a+b; y=1; z=x+x", where only what is read and written counts.
#pragma once

#include "support.h"

namespace oz {

struct GraphList {
  tAsynt list = nullptr;
  std::map<std::string, tAsynt> symbols{};  // their information, by name

  explicit GraphList(const std::string& text) {
    std::vector<tAsynt> all;
    std::istringstream assignments(text);
    for (std::string a; std::getline(assignments >> std::ws, a, ';');) {
      const size_t equals = a.find('=');
      all.push_back(set(use(a.substr(0, equals)), sum(a.substr(equals + 1))));
    }
    list = oz::list(all);
  }

 private:
  tAsynt use(const std::string& name) {
    if (name[0] >= '0' && name[0] <= '9') return mExactIntConst("1");
    const auto found = symbols.try_emplace(name, nullptr).first;
    if (!found->second) found->second = mAbsoluteSymbol(mNoType(), NoPosition, found->first.c_str(), mExpression0());
    return mSymbol(found->second);
  }

  tAsynt sum(const std::string& text) {
    std::vector<tAsynt> operands;
    std::istringstream names(text);
    for (std::string name; std::getline(names, name, '+');) operands.push_back(use(name));
    return operands.size() == 1 ? operands[0] : mXPlus(no_place(), oz::list(operands));
  }
};

}  // namespace oz
