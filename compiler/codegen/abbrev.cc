// Short stand-ins for identifiers that are longer than Fortran allows.
//
// The generated text holds the long name; the macro file, which it includes, tells the preprocessor the short one:
//
//   #define steam_turbine_high_pressure_stage_inlet steam_turbine_high_pressure_st0
//
// An abbreviation is the start of the name and a number that grows to the left: ...st0 to ...st9, then ...s10, ...s11.
#include "abbrev.h"

#include <string>
#include <unordered_map>

#include "Asynt.h"
#include "index.h"
#include "ozerrors.h"

namespace oz {
namespace {

constexpr size_t kFirstCountingPlace = 3;  // the number never grows further to the left

FILE* outfile;           // where the definitions go
size_t max_symlen = 31;  // length of an abbreviation
Index* long_names;       // the names that have an abbreviation
Index* abbrevs;          // the abbreviations in use
tAsynt dummy;            // fills the entry slots of both
// The last abbreviation made for each start. All that come before it in counting order are in use for good, so the
// search for the next one goes on from there.
std::unordered_map<std::string, std::string> last_of_start;

void renew(Index** index) {
  if (*index) delete_index(*index);
  *index = make_index(hash_table, 1);
}

// The next abbreviation in counting order: 9 becomes 0 and carries; what is no digit counts as 0.
void count_up(std::string* abbreviation) {
  size_t place = abbreviation->size() - 1;
  while ((*abbreviation)[place] == '9') {
    (*abbreviation)[place] = '0';
    if (place-- <= kFirstCountingPlace) die_msg("Internal error in line %d of %s", __LINE__, "abbrev");
  }
  char& c = (*abbreviation)[place];
  c = c >= '0' && c <= '8' ? static_cast<char>(c + 1) : '1';
}

}  // namespace

void init_abbrev(FILE* of, int max_len) {
  outfile = of;
  max_symlen = static_cast<size_t>(max_len);
  renew(&long_names);
  renew(&abbrevs);
  dummy = nEmpty();
  last_of_start.clear();
}

void remember_long(const char* name) {
  if (!long_names) init_abbrev(nullptr, static_cast<int>(max_symlen));
  if (!create_entry(long_names, dummy, name)) return;
  const std::string start = std::string(name).substr(0, max_symlen - 1);
  std::string& abbreviation = last_of_start.try_emplace(start, start + '0').first->second;
  while (!create_entry(abbrevs, dummy, abbreviation.c_str())) count_up(&abbreviation);
  if (outfile) std::fprintf(outfile, "#define %s %s\n", name, abbreviation.c_str());
}

}  // namespace oz
