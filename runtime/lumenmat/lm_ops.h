// Operators and functions that work element by element.
//
//   a + b, a - b, -a, 2*a, a/2, 2/a, ElemProduct(a, b), ElemQuotient(a, b), sin(a), pow(a, 2), Mod(a, 3) ...
//
// They give expressions (see lm_array.h). The product of two arrays by * is not among them: see lm_linear.h.
#ifndef LM_OPS_H
#define LM_OPS_H

#include "lm_array.h"

namespace lumen {

template <class Op, class A>
auto make_unary(A&& a) {
  return Unary<Op, operand_of<A>>(as_operand(std::forward<A>(a)));
}

template <class Op, class A, class B>
auto make_binary(A&& a, B&& b) {
  return Binary<Op, operand_of<A>, operand_of<B>>(as_operand(std::forward<A>(a)), as_operand(std::forward<B>(b)));
}

template <class A>
using IfArray = std::enable_if_t<is_array<A>, int>;
template <class A, class B>
using IfArrays = std::enable_if_t<is_array<A> && is_array<B>, int>;
// Two operands, one of which at least is an array.
template <class A, class B>
using IfArrayAndAny =
    std::enable_if_t<(is_array<A> && (is_array<B> || is_number<plain<B>>)) || (is_number<plain<A>> && is_array<B>),
                     int>;
template <class A, class B>
using IfArrayAndNumber =
    std::enable_if_t<(is_array<A> && is_number<plain<B>>) || (is_number<plain<A>> && is_array<B>), int>;

// ---- operators

#define LM_BINARY_OPERATION(Name, text, expression)       \
  struct Name {                                           \
    static const char* name() { return text; }            \
    template <class A, class B>                           \
    LM_INLINE static auto apply(const A& a, const B& b) { \
      return expression;                                  \
    }                                                     \
  };
LM_BINARY_OPERATION(Plus, "Plus", a + b)
LM_BINARY_OPERATION(Minus, "Subtract", a - b)
LM_BINARY_OPERATION(Times, "ElemProduct", a* b)
LM_BINARY_OPERATION(Divide, "Divide", a / b)
LM_BINARY_OPERATION(And, "And", a&& b)
LM_BINARY_OPERATION(Or, "Or", a || b)

template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator+(A&& a, B&& b) {
  return make_binary<Plus>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator-(A&& a, B&& b) {
  return make_binary<Minus>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndNumber<A, B> = 0>
auto operator*(A&& a, B&& b) {
  return make_binary<Times>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndNumber<A, B> = 0>
auto operator/(A&& a, B&& b) {
  return make_binary<Divide>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator&&(A&& a, B&& b) {
  return make_binary<And>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator||(A&& a, B&& b) {
  return make_binary<Or>(std::forward<A>(a), std::forward<B>(b));
}

template <class A, class B, IfArrays<A, B> = 0>
auto ElemProduct(A&& a, B&& b) {
  return make_binary<Times>(std::forward<A>(a), std::forward<B>(b));
}

// Ints are divided as reals: the caller rounds where it wants to.
struct Quotient {
  static const char* name() { return "ElemQuotient"; }
  template <class A, class B>
  LM_INLINE static auto apply(const A& a, const B& b) {
    if constexpr (std::is_same_v<A, int> && std::is_same_v<B, int>)
      return static_cast<double>(a) / b;
    else
      return a / b;
  }
};
template <class A, class B, IfArrays<A, B> = 0>
auto ElemQuotient(A&& a, B&& b) {
  return make_binary<Quotient>(std::forward<A>(a), std::forward<B>(b));
}

struct Negate {
  template <class A>
  LM_INLINE static auto apply(const A& a) {
    return -a;
  }
};
struct Not {
  template <class A>
  LM_INLINE static int apply(const A& a) {
    return !a;
  }
};
template <class A, IfArray<A> = 0>
auto operator-(A&& a) {
  return make_unary<Negate>(std::forward<A>(a));
}
template <class A, IfArray<A> = 0>
auto operator!(A&& a) {
  return make_unary<Not>(std::forward<A>(a));
}

// ---- functions of one argument

// The function of numbers is std's or the one of this library, which is found by its argument or stands in this
// namespace before.
#define LM_UNARY_FUNCTION(f, scalar)               \
  struct Fn_##f {                                  \
    template <class A>                             \
    LM_INLINE static auto apply(const A& a) {      \
      return scalar;                               \
    }                                              \
  };                                               \
  template <class A, IfArray<A> = 0>               \
  auto f(A&& a) {                                  \
    return make_unary<Fn_##f>(std::forward<A>(a)); \
  }
// The functions of C++, for real and complex arguments.
#define LM_STD_FUNCTION(f)                   \
  struct Std_##f {                           \
    template <class A>                       \
    LM_INLINE static auto call(const A& a) { \
      using std::f;                          \
      return f(a);                           \
    }                                        \
  };                                         \
  LM_UNARY_FUNCTION(f, Std_##f::call(a))
LM_STD_FUNCTION(sin)
LM_STD_FUNCTION(asin)
LM_STD_FUNCTION(sinh)
LM_STD_FUNCTION(asinh)
LM_STD_FUNCTION(cos)
LM_STD_FUNCTION(acos)
LM_STD_FUNCTION(cosh)
LM_STD_FUNCTION(acosh)
LM_STD_FUNCTION(tan)
LM_STD_FUNCTION(atan)
LM_STD_FUNCTION(tanh)
LM_STD_FUNCTION(atanh)
LM_STD_FUNCTION(exp)
LM_STD_FUNCTION(log)
LM_STD_FUNCTION(sqrt)
LM_STD_FUNCTION(abs)
#undef LM_STD_FUNCTION
LM_UNARY_FUNCTION(sign, lumen::sign(a))
LM_UNARY_FUNCTION(ifloor, lumen::ifloor(a))
LM_UNARY_FUNCTION(iceil, lumen::iceil(a))
LM_UNARY_FUNCTION(irint, lumen::irint(a))
LM_UNARY_FUNCTION(IntegerPart, lumen::IntegerPart(a))
LM_UNARY_FUNCTION(FractionalPart, lumen::FractionalPart(a))
// Written for Quotient of arrays, whose elements are ints.
LM_UNARY_FUNCTION(floor, lumen::ifloor(a))
LM_UNARY_FUNCTION(re, lumen::re(a))
LM_UNARY_FUNCTION(im, lumen::im(a))
LM_UNARY_FUNCTION(arg, lumen::arg(a))
LM_UNARY_FUNCTION(conjugate, lumen::conjugate(a))
#undef LM_UNARY_FUNCTION

// ---- functions of two arguments

// An int power of ints is an int.
struct Power {
  static const char* name() { return "Power"; }
  template <class A, class B>
  LM_INLINE static auto apply(const A& a, const B& b) {
    using std::pow;
    if constexpr (std::is_same_v<A, int> && std::is_same_v<B, int>)
      return to_int(pow(a, b), "Power");
    else
      return pow(a, b);
  }
};
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto pow(A&& a, B&& b) {
  return make_binary<Power>(std::forward<A>(a), std::forward<B>(b));
}

struct Modulo {
  static const char* name() { return "Mod"; }
  template <class A, class B>
  LM_INLINE static auto apply(const A& a, const B& b) {
    return lumen::Mod(a, b);
  }
};
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto Mod(A&& a, B&& b) {
  return make_binary<Modulo>(std::forward<A>(a), std::forward<B>(b));
}

struct ArcTan2 {
  static const char* name() { return "ArcTan"; }
  template <class A, class B>
  LM_INLINE static double apply(const A& y, const B& x) {
    return std::atan2(static_cast<double>(y), static_cast<double>(x));
  }
};
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto atan2(A&& y, B&& x) {
  return make_binary<ArcTan2>(std::forward<A>(y), std::forward<B>(x));
}

// ---- comparison as a whole

// Arrays of different shapes are different.
template <class A, class B, IfArrays<A, B> = 0>
bool operator==(A&& a, B&& b) {
  static_assert(rank_of<A> == rank_of<B>, "the arrays must have as many dimensions");
  const auto& x = value_of(a);
  const auto& y = value_of(b);
  return x.shape() == y.shape() && std::equal(x.elements(), x.elements() + x.size(), y.elements());
}
template <class A, class B, IfArrays<A, B> = 0>
bool operator!=(A&& a, B&& b) {
  return !(a == b);
}

}  // namespace lumen

#endif
