#include "tanks.h"

#include "tanks.icc"

#include <math.h>
double Tanks_TjetSpeed ( const double &head)
{
    return sign (head)*sqrt(2*Tanks_Tgravity*abs(head));
}

double pilot_Tlower_Toutflow;
double laboratory_Tupper_Tlevel;
double pilot_Tupper_Tlevel;
double pilot_Tdrain_Tarea;
double pilot_Tvalve_Tarea;
double laboratory_Tdrain_Tarea;
double laboratory_Tvalve_Tarea;
double laboratory_Tupper_Toutflow;
double laboratory_Tlower_Tlevel;
double pilot_Tlower_Tlevel;
double laboratory_Tpumped;
double laboratory_Tlower_Tinflow;
double laboratory_Tlower_Tvolume;
double laboratory_Tupper_Tinflow;
double pilot_Tlower_Tinflow;
double laboratory_Tupper_Tvolume;
double pilot_Tupper_Toutflow;
double Tanks_Tgravity;
double pilot_Tlower_Tvolume;
double pilot_Tcontrol_Tintegral;
double pilot_Tupper_Tinflow;
double pilot_Tupper_Tvolume;
double pilot_Tpumped;
double laboratory_Tlower_Toutflow;
double laboratory_Tcontrol_Tintegral;
