(* External functions in every form and language. The routines stand beside this file; the prefix tells the language. *)
model Foreign;

(* Scalars of all types, in and out. *)
{int, real, complex} scalars[int i_, real x_, complex z_] :=
  externinfo "f_" "" "Fortran" procedure(Input x, Output j, Input z, Output y, Input i, Output w);
{int, real, complex} numbers[int i_, real x_, complex z_] :=
  externinfo "c_" "" "C" procedure(Input x, Output j, Input z, Output y, Input i, Output w);
{int, real, complex, String, bool} values[int i_, real x_, complex z_, String s_, bool b_] :=
  externinfo "x_" "" "C++"
    procedure(Input x, Output j, Input z, Output y, Input i, Output w, InOut s, Input b, Output c);

(* The value of the routine: alone, and ahead of others. *)
real power[real x_, int n_] := externinfo "f_" "" "Fortran" function(Input n, Input x);
complex turned[complex z_] := externinfo "f_" "" "Fortran" function(Input z);
complex conjugate[complex z_] := externinfo "c_" "" "C" function(Input z);
real array[0] repeated[real x_, int n_] := externinfo "x_" "" "C++" function(Input x, Input n);
{int, real} division[real x_, real y_] := externinfo "f_" "" "Fortran" function(Input x, Input y, Output rest);
{int, real} quotient[real x_, real y_] := externinfo "c_" "" "C" function(Input x, Input y, Output rest);
{int, real array[0]} counted[real array[0] v_] := externinfo "x_" "" "C++" function(InOut v);

(* A value that the routine hands back by its one output, or by the argument that it changes. *)
real hypotenuse[real x_, real y_] := externinfo "f_" "" "Fortran" procedure(Input x, Input y, Output r);
complex product[complex z_, complex w_] := externinfo "c_" "" "C" procedure(Input z, Output r, Input w);
int doubled[int i_] := externinfo "f_" "" "Fortran" procedure(InOut i);
String capitals[String s_] := externinfo "c_" "" "C" procedure(InOut s);
real array[0] halved[real array[0] v_] := externinfo "x_" "" "C++" procedure(InOut v);

(* Texts: their length, and one that is changed along with a number. *)
int length[String s_] := externinfo "c_" "" "C" function(Input s);
{String, int} replaced[String s_, int n_] := externinfo "c_" "" "C" procedure(InOut s, InOut n);

(* A size that is a variable of the stub, and one that is an argument. *)
real total[real array[0, 0] a_, int n_] :=
  externinfo "f_" "" "Fortran" function(rows = dim(a, 1), n = dim(a, 2), Input a);

(* Arrays of two and four dimensions. The routine adds to each element its subscripts, read as digits, and puts these digits into a
   second array, which has the sizes of the first in reverse. *)
{real array[0, 0], int array[0, 0]} marked2[real array[0, 0] a_] :=
  externinfo "f_" "" "Fortran" procedure(n1 = dim(a, 1), n2 = dim(a, 2), InOut a, Output b(n2, n1));
{real array[0, 0, 0, 0], complex array[0, 0, 0, 0]} marked4[real array[0, 0, 0, 0] a_] :=
  externinfo "f_" "" "Fortran"
    procedure(n1 = dim(a, 1), n2 = dim(a, 2), n3 = dim(a, 3), n4 = dim(a, 4), InOut a, Output b(n4, n3, n2, n1));
{complex array[0, 0, 0, 0], int array[0, 0, 0, 0]} noted4[complex array[0, 0, 0, 0] a_] :=
  externinfo "c_" "" "C"
    procedure(n1 = dim(a, 1), n2 = dim(a, 2), n3 = dim(a, 3), n4 = dim(a, 4), InOut a, Output b(n4, n3, n2, n1));
{real array[0, 0, 0, 0], complex array[0, 0, 0, 0]} taken4[real array[0, 0, 0, 0] a_] :=
  externinfo "x_" "" "C++"
    procedure(n1 = dim(a, 1), n2 = dim(a, 2), n3 = dim(a, 3), n4 = dim(a, 4), InOut a, Output b(n4, n3, n2, n1));

(* Without directions the routine is called as it is declared; the second language leaves out the const of arrays. *)
real plain[real x_] := extern "C++";
real filled[real x_, real array[0] v_] := externinfo "x_" "" "C++NOCONST" function();

(* Variables of other languages bear the language in their name. *)
real rate := externinfo "c_" "" "C" variable();
int array[3] counts := externinfo "x_" "" "C++" variable();
real used[real x_] := rate*x + counts[[3]];

(* Generated code calls them all alike. *)
real together[int n_] :=
  Module[{real array[0] v, int count, real array[2, 2] a},
    a[[1, 1]] = 1.0; a[[1, 2]] = 2.0; a[[2, 1]] = 3.0; a[[2, 2]] = 4.0;
    {count, v} = counted[repeated[power[2.0, n], 3]];
    count*v[[3]] + total[a, 0]*plain[2.0] + doubled[n]];
