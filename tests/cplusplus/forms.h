#ifndef forms_h
#define forms_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Forms_Tbranches ( const double &, const int &);

double Forms_Tchosen ( const double &);

double Forms_Tnested ( const double &);

void Forms_Treport ( const double &);

double Forms_Tsequence ( const double &);

lm_complex Forms_Tturned ( const lm_complex &, const double &);

doubleNN Forms_Tproduct ( const doubleNN &, const doubleNN &);

doubleN Forms_Tline ( const int &, const doubleNN &);

doubleNN Forms_Traised ( const doubleNN &, const doubleN &);

void Forms_Tseveral ( const double &, double &, int &, doubleN &);

double Forms_Tuser ( const double &);

int Forms_Tremainder ( const int &, const int &);

int Forms_Tbetween ( const double &, const double &, const double &);

double Forms_Tsteps ( const int &);

int Forms_Tfactorial ( const int &);

double asked ( const double &);

extern lm_complex Forms_Tpole;
extern doubleNN Forms_Ttable;
extern double Forms_Tscale;
#endif
