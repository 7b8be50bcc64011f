#include "numerics.h"

#include "numerics.icc"

#include <math.h>
double Numerics_Tpolynomial ( const double &x, const int &n, const doubleN &c)
{
    double s = 0.0;
    int i;
    i = n;
    while ((i >= 1))
    {
        s = s*x+c(i);
        i = i-1;
    }
    return s;
}

void Numerics_TpolynomialSlope ( const double &x, const int &n, const doubleN &c
    , double &zc_O1, double &zc_O2)
{
    double p = 0.0;
    double q = 0.0;
    int i;
    i = n;
    while ((i >= 1))
    {
        q = q*x+p;
        p = p*x+c(i);
        i = i-1;
    }
    zc_O1 = p;
    zc_O2 = q;; 
}

double Numerics_TpolynomialRoot ( const double &start, const int &n, const 
    doubleN &c)
{
    double x = start;
    double value = 1.0;
    double slope = 0.0;
    int rounds = 0;
    while (((abs(value) > Numerics_Ttolerance)) && ((rounds < Numerics_Tlimit))
        )
    {
        Numerics_TpolynomialSlope (x, n, c, value, slope);
        x = x-value/slope;
        rounds = rounds+1;
    }
    return x;
}

int Numerics_TcommonDivisor ( const int &a, const int &b)
{
    int u = a;
    int v = b;
    int rest;
    while ((v != 0))
    {
        rest = Mod(u, v);
        u = v;
        v = rest;
    }
    return u;
}

doubleN Numerics_Tspaced ( const double &from, const double &to, const int &n)
{
    doubleN x(n);
    double step = (to-from)/(n-1);
    int i;

    i = 1;
    while ((i <= n))
    {
        x(i) = from+(i-1)*step;
        i = i+1;
    }
    return x;
}

double Numerics_Ttrapezoid ( const int &n, const doubleN &y, const double &step
    )
{
    double s = (y(1)+y(n))/2;
    int i;
    i = 2;
    while ((i < n))
    {
        s = s+y(i);
        i = i+1;
    }
    return s*step;
}

void Numerics_Tspread ( const int &n, const doubleN &x, double &zc_O1, double &
    zc_O2, double &zc_O3)
{
    double least = x(1);
    double most = x(1);
    double sum = 0.0;
    int i;
    i = 1;
    while ((i <= n))
    {
        if ((x(i) < least))
        {
            least = x(i);
        }
        if ((x(i) > most))
        {
            most = x(i);
        }
        sum = sum+x(i);
        i = i+1;
    }
    zc_O1 = least;
    zc_O2 = most;
    zc_O3 = sum/n;; 
}

void Numerics_TstraightLine ( const int &n, const doubleN &x, const doubleN &y, 
    double &zc_O1, double &zc_O2)
{
    double sx = 0.0;
    double sy = 0.0;
    double sxx = 0.0;
    double sxy = 0.0;
    double slope;
    int i;
    i = 1;
    while ((i <= n))
    {
        sx = sx+x(i);
        sy = sy+y(i);
        sxx = sxx+pow(x(i), 2);
        sxy = sxy+x(i)*y(i);
        i = i+1;
    }
    slope = (n*sxy-sx*sy)/(n*sxx-(sx*sx));
    zc_O1 = (sy-slope*sx)/n;
    zc_O2 = slope;; 
}

doubleN Numerics_Tapplied ( const int &m, const int &n, const doubleNN &a, 
    const doubleN &x)
{
    doubleN y(m);
    int i;
    int j;

    i = 1;
    while ((i <= m))
    {
        y(i) = 0.0;
        j = 1;
        while ((j <= n))
        {
            y(i) = y(i)+a(i, j)*x(j);
            j = j+1;
        }
        i = i+1;
    }
    return y;
}

doubleN Numerics_Ttridiagonal ( const int &n, const doubleN &low, const doubleN 
    &mid, const doubleN &up, const doubleN &rhs)
{
    doubleN c(n);
    doubleN x(n);
    double pivot = mid(1);
    int i;


    x(1) = rhs(1)/pivot;
    i = 2;
    while ((i <= n))
    {
        c(i) = up(i-1)/pivot;
        pivot = mid(i)-low(i)*c(i);
        x(i) = (rhs(i)-low(i)*x(i-1))/pivot;
        i = i+1;
    }
    i = n-1;
    while ((i >= 1))
    {
        x(i) = x(i)-c(i+1)*x(i+1);
        i = i-1;
    }
    return x;
}

void Numerics_Trelaxed ( const int &m, const int &n, const doubleNN &u, const 
    double &weight, doubleNN &zc_O1, double &zc_O2)
{
    doubleNN v(m, n);
    double change = 0.0;
    double delta;
    int i;
    int j;

    v = u;
    i = 2;
    while ((i < m))
    {
        j = 2;
        while ((j < n))
        {
            delta = weight*((v(i-1, j)+v(i+1, j)+v(i, j-1)+v(i, j+1))/4-v(i, j))
                ;
            v(i, j) = v(i, j)+delta;
            if ((abs(delta) > change))
            {
                change = abs(delta);
            }
            j = j+1;
        }
        i = i+1;
    }
    zc_O1 = v;
    zc_O2 = change;; 
}

int Numerics_Tplace ( const double &x, const int &n, const doubleN &points)
{
    int low = 0;
    int high = n+1;
    int middle;
    while ((high-low > 1))
    {
        middle = low+high;
        middle = floor(middle / 2);
        if ((points(middle) <= x))
        {
            low = middle;
        }
        else
        {
            high = middle;
        }
    }
    return low;
}

int Numerics_Tprime ( const int &n)
{
    int d = 2;
    int found = (n > 1);
    while (found && ((d*d <= n)))
    {
        if ((Mod(n, d) == 0))
        {
            found = 0;
        }
        d = d+1;
    }
    return found;
}

double Numerics_Tbilinear ( const double &x, const double &knee, const double &
    soft, const double &hard)
{
    return  (( (x < 0) ) ? ( 0.0 ) : (  (( (x < knee) ) ? ( soft*x ) : ( soft*
        knee+hard*(x-knee) ))  )) ;
}

double errorFunction ( const double &x)
;  /* EXTERNAL  C */

int randomInteger ( const int &low, const int &high)
;  /* EXTERNAL  C++ */

double bumper_Tforce ( const double &x)
{
    return Numerics_Tbilinear (x, 0.012, 4.0e4, 2.5e6);
}

double bumper_Twork ( const double &x)
{
    double s = 0.0;
    double step = x/Numerics_Tlimit;
    int i;
    i = 1;
    while ((i <= Numerics_Tlimit))
    {
        s = s+bumper_Tforce ((i-0.5)*step)*step;
        i = i+1;
    }
    return s;
}

int bumper_Tclosed ( const double &x)
{
    return (x > 0.012);
}

int Numerics_Tlimit;
double Numerics_Ttolerance;
