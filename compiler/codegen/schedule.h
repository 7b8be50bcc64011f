// What the writers of schedules in both languages share: the parts of a scheduled ParExec, and how many elements of the
// state vector a variable takes.
#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Asynt.h"

namespace oz {

// A ParExec of one block whose code is a ParExec with a block for each worker.
struct Schedule {
  tAsynt in, out;  // Symbols: the state variables, the outputs
  tAsynt workers;  // InOutExprs, not empty
};

// False for a tree of another shape.
bool Schedule_of(tAsynt t, Schedule* schedule);

// Leaves with the message of a schedule writer that a routine met what it is not made for.
using Schedule_failure = void (*)(const char* routine);

// The elements of a variable: 1 for a scalar of a type that has a size (texts have one in some languages only), the
// product of the dimensions for an array, each of which must be a number; 0 without dimensions.
int Schedule_type_size(tAsynt info, bool texts, Schedule_failure failure);

// The elements of all variables of a Symbols list.
int Schedule_list_size(tAsynt list, bool texts, Schedule_failure failure);

// The places of a list's symbols, to be asked for many of them.
struct Symbol_places {
  std::unordered_map<std::string, std::vector<std::pair<tAsynt, int>>> places{};  // by text: equal symbols have equal
                                                                                  // texts
  int length = 0;
};
Symbol_places Places_of(tAsynt list);

// The place of a symbol from 1, or a negative number if it is not in the list: what Locate_symbol gives.
int Place_of(const Symbol_places& places, tAsynt s);

}  // namespace oz
