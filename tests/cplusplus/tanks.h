#ifndef tanks_h
#define tanks_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Tanks_TjetSpeed ( const double &);

extern double pilot_Tlower_Toutflow;
extern double laboratory_Tupper_Tlevel;
extern double pilot_Tupper_Tlevel;
extern double pilot_Tdrain_Tarea;
extern double pilot_Tvalve_Tarea;
extern double laboratory_Tdrain_Tarea;
extern double laboratory_Tvalve_Tarea;
extern double laboratory_Tupper_Toutflow;
extern double laboratory_Tlower_Tlevel;
extern double pilot_Tlower_Tlevel;
extern double laboratory_Tpumped;
extern double laboratory_Tlower_Tinflow;
extern double laboratory_Tlower_Tvolume;
extern double laboratory_Tupper_Tinflow;
extern double pilot_Tlower_Tinflow;
extern double laboratory_Tupper_Tvolume;
extern double pilot_Tupper_Toutflow;
extern double Tanks_Tgravity;
extern double pilot_Tlower_Tvolume;
extern double pilot_Tcontrol_Tintegral;
extern double pilot_Tupper_Tinflow;
extern double pilot_Tupper_Tvolume;
extern double pilot_Tpumped;
extern double laboratory_Tlower_Toutflow;
extern double laboratory_Tcontrol_Tintegral;
#endif
