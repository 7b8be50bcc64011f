#ifndef numerics_h
#define numerics_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Numerics_Tpolynomial ( const double &, const int &, const doubleN &);

void Numerics_TpolynomialSlope ( const double &, const int &, const doubleN &, 
    double &, double &);

double Numerics_TpolynomialRoot ( const double &, const int &, const doubleN &
    );

int Numerics_TcommonDivisor ( const int &, const int &);

doubleN Numerics_Tspaced ( const double &, const double &, const int &);

double Numerics_Ttrapezoid ( const int &, const doubleN &, const double &);

void Numerics_Tspread ( const int &, const doubleN &, double &, double &, 
    double &);

void Numerics_TstraightLine ( const int &, const doubleN &, const doubleN &, 
    double &, double &);

doubleN Numerics_Tapplied ( const int &, const int &, const doubleNN &, const 
    doubleN &);

doubleN Numerics_Ttridiagonal ( const int &, const doubleN &, const doubleN &, 
    const doubleN &, const doubleN &);

void Numerics_Trelaxed ( const int &, const int &, const doubleNN &, const 
    double &, doubleNN &, double &);

int Numerics_Tplace ( const double &, const int &, const doubleN &);

int Numerics_Tprime ( const int &);

double Numerics_Tbilinear ( const double &, const double &, const double &, 
    const double &);

double errorFunction ( const double &);

int randomInteger ( const int &, const int &);

double spbessel_c ( const int &, const double &);

void geopolar_ftn ( double , double , double &, double &);

void libsorted_c ( const int &, const doubleN &, doubleN &, int &);

double bumper_Tforce ( const double &);

double bumper_Twork ( const double &);

int bumper_Tclosed ( const double &);

extern int Numerics_Tlimit;
extern double Numerics_Ttolerance;
#endif
