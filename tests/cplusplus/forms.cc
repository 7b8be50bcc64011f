#include "forms.h"

#include "forms.icc"

#include <math.h>
double Forms_Tbranches ( const double &x, const int &n)
{
    return ( ((x < 0)) ? (0.0) : ( ((n == 1)) ? (x) : ( (1) ? (sqrt(x)) :  ( 
        sqrt(x) ) )));
}

double Forms_Tchosen ( const double &x)
{
    double y;
    if ((x > 1))
    {
        y = x-1;
        y = (y*y);
    }
    else if ((x > 0))
    {
        y = x;
    }
    else
    {
        y = -x;
    }
    if ((y > 10))
    {
        y = 10;}
    else if ((y > 5))
    {
        y = 5;}

    return y;
}

double Forms_Tnested ( const double &a)
{
    double b = a;
    b = b+1;
    double c;
    c = (b*b*b);
    return c;
}

void Forms_Treport ( const double &x)
{
    cout << "x is ";
    cout << (x);
    cout << "\n";
    if ((x > 0))
    {
        cout << (x);
        cout << "\n";
    }; 
}

double Forms_Tsequence ( const double &x)
{
    return  ( Forms_Tscale = x,Forms_Tscale*x ) ;
}

lm_complex Forms_Tturned ( const lm_complex &z, const double &phi)
{
    return z*(exp(lm_complex(0,1)*phi)/Forms_Tpole);
}

doubleNN Forms_Tproduct ( const doubleNN &a, const doubleNN &b)
{
    return a*b;
}

doubleN Forms_Tline ( const int &i, const doubleNN &a)
{
    return a(i,All);
}

doubleNN Forms_Traised ( const doubleNN &a, const doubleN &v)
{
    doubleNN b(4, 3);

    b = a;
    b.Set(1,All,v);
    b(2, 3) = 1.5;
    return b;
}

void Forms_Tseveral ( const double &x, double &zc_O1, int &zc_O2, doubleN &zc_O3
    )
{
    zc_O1 = x*x;
    zc_O2 = 7;
    zc_O3.SetShape(2 );
    zc_O3(1) = x;
    zc_O3(2) = -x;
; 
}

double Forms_Tuser ( const double &x)
{
    double p;
    int n;
    doubleN v(2);

    Forms_Tseveral (x, p, n, v);
    p = p+1;
    n = n-1;
    
    return (p-(-x))+n+v(2);
}

int Forms_Tremainder ( const int &a, const int &b)
{
    return Mod(a, b)-floor(a / b);
}

int Forms_Tbetween ( const double &x, const double &low, const double &high)
{
    return ((low <= x) && (x < high)) && !((x == 0) || (x != x));
}

double Forms_Tsteps ( const int &n)
{
    double s = 0.0;
    int i = 0;
    while (1)
    {
        i = i+1;
        if ((i > n))
        {
            break;
        }
        s = s+1.0e-3*i;
    }
    return s;
}

int Forms_Tfactorial ( const int &n)
{
    return  (( (n <= 1) ) ? ( 1 ) : ( n*Forms_Tfactorial (n-1) )) ;
}

double asked ( const double &x)
;  /* EXTERNAL   */

lm_complex Forms_Tpole;
doubleNN Forms_Ttable(2, 3);
double Forms_Tscale;
