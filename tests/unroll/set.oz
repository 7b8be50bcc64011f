model Sets;

class Ball(m, next)
  hide:
    real mass := m;
    f[x_] := x*v + next`v;
    h[m] := 1;
    v;
end Ball;

instance ball[i] inherits Ball(i, ball[i + 1])
  hide:
    own := f[i] + ball[1]`v + ball[n]`f[v] + this`v;
    n := 3;
    rules := {v -> n, v :> n};
  begin
    u := v
end ball;
