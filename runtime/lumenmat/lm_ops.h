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
LM_BINARY_OPERATION(Less, "Less", a < b)
LM_BINARY_OPERATION(LessEqual, "LessEqual", a <= b)
LM_BINARY_OPERATION(Greater, "Greater", a > b)
LM_BINARY_OPERATION(GreaterEqual, "GreaterEqual", a >= b)
#undef LM_BINARY_OPERATION

// Ints are divided as reals: the caller rounds where it wants to.
template <class A, class B>
LM_INLINE auto quotient(const A& a, const B& b) {
  if constexpr (std::is_same_v<A, int> && std::is_same_v<B, int>)
    return static_cast<double>(a) / b;
  else
    return a / b;
}
struct Divide {
  static const char* name() { return "Divide"; }
  template <class A, class B>
  LM_INLINE static auto apply(const A& a, const B& b) {
    return quotient(a, b);
  }
};

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
auto operator<(A&& a, B&& b) {
  return make_binary<Less>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator<=(A&& a, B&& b) {
  return make_binary<LessEqual>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator>(A&& a, B&& b) {
  return make_binary<Greater>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator>=(A&& a, B&& b) {
  return make_binary<GreaterEqual>(std::forward<A>(a), std::forward<B>(b));
}

template <class A, class B, IfArrays<A, B> = 0>
auto ElemProduct(A&& a, B&& b) {
  return make_binary<Times>(std::forward<A>(a), std::forward<B>(b));
}

struct Quotient {
  static const char* name() { return "ElemQuotient"; }
  template <class A, class B>
  LM_INLINE static auto apply(const A& a, const B& b) {
    return quotient(a, b);
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
template <class A, IfArray<A> = 0>
auto operator-(A&& a) {
  return make_unary<Negate>(std::forward<A>(a));
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
  LM_INLINE static auto apply(const A& y, const B& x) {
    if constexpr (std::is_same_v<A, lm_complex> || std::is_same_v<B, lm_complex>)
      return lumen::atan2(lm_complex(y), lm_complex(x));
    else
      return std::atan2(static_cast<double>(y), static_cast<double>(x));
  }
};
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto atan2(A&& y, B&& x) {
  return make_binary<ArcTan2>(std::forward<A>(y), std::forward<B>(x));
}

// a + I*b is written lm_complex(a, b), whatever a and b are.
struct ComplexOf {
  static const char* name() { return "Plus"; }
  template <class A, class B>
  LM_INLINE static lm_complex apply(const A& a, const B& b) {
    return lm_complex(a, b);
  }
};
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto make_lm_complex(A&& a, B&& b) {
  return make_binary<ComplexOf>(std::forward<A>(a), std::forward<B>(b));
}
template <class... X, std::enable_if_t<!(is_array<X> || ...), int> = 0>
constexpr lm_complex make_lm_complex(const X&... x) {
  return lm_complex(x...);
}

// ---- equality and truth
//
// a == b is an array, element by element, and a bool: whether all is equal. Which of them is wanted only the place
// tells where it stands. As a bool, arrays of different shapes are different.

// The value of an operand; an array itself is not copied.
template <class T>
const T& dense(const Scalar<T>& x) {
  return x.value;
}
template <class T, int N>
const Array<T, N>& dense(const Ref<T, N>& x) {
  return x.array();
}
template <class D, class T, int N>
Array<T, N> dense(const Expression<D, T, N>& x) {
  return Array<T, N>(x);
}

template <class T, class U, int N>
bool all_equal(const Array<T, N>& a, const Array<U, N>& b) {
  return a.shape() == b.shape() && std::equal(a.elements(), a.elements() + a.size(), b.elements());
}
template <class T, class U, int N>
bool all_equal(const Array<T, N>& a, const U& b) {
  return std::all_of(a.elements(), a.elements() + a.size(), [&](const T& x) { return x == b; });
}
template <class T, class U, int N>
bool all_equal(const T& a, const Array<U, N>& b) {
  return all_equal(b, a);
}

template <class Op, class A, class B>
class Comparison : public Binary<Op, A, B> {
 public:
  Comparison() = default;
  Comparison(A a, B b) : Binary<Op, A, B>(std::move(a), std::move(b)) {}
  operator bool() const { return Op::whole(this->a_, this->b_); }
};

template <class X>
struct IsTruth : std::false_type {};
template <class T>
struct IsTruth<Scalar<T>> : std::true_type {};
template <class Op, class A, class B>
struct IsTruth<Comparison<Op, A, B>> : std::true_type {};

template <class T>
bool truth_of(const Scalar<T>& x) {
  return x.value ? true : false;
}
template <class Op, class A, class B>
bool truth_of(const Comparison<Op, A, B>& x) {
  return x;
}

// `of`: whether the operation makes a truth of these operands. Truths and numbers are joined to truths, arrays are not.
#define LM_TRUTH_OPERATION(Name, condition, element, of_whole) \
  struct Name {                                                \
    static const char* name() { return #Name; }                \
    template <class A, class B>                                \
    static constexpr bool of = condition;                      \
    template <class A, class B>                                \
    LM_INLINE static int apply(const A& a, const B& b) {       \
      return element;                                          \
    }                                                          \
    template <class A, class B>                                \
    static bool whole(const A& a, const B& b) {                \
      return of_whole;                                         \
    }                                                          \
  };                                                           \
  template <>                                                  \
  inline constexpr bool of_truth<Name> = true;
LM_TRUTH_OPERATION(Equal, true, a == b, all_equal(dense(a), dense(b)))
LM_TRUTH_OPERATION(Unequal, true, a != b, !all_equal(dense(a), dense(b)))
#define LM_TRUTHS (IsTruth<A>::value && IsTruth<B>::value)
LM_TRUTH_OPERATION(And, LM_TRUTHS, a&& b, truth_of(a) && truth_of(b))
LM_TRUTH_OPERATION(Or, LM_TRUTHS, a || b, truth_of(a) || truth_of(b))
LM_TRUTH_OPERATION(Nor, LM_TRUTHS, !(a || b), !(truth_of(a) || truth_of(b)))
#undef LM_TRUTHS
#undef LM_TRUTH_OPERATION

template <class Op, class A, class B>
auto make_truth(A&& a, B&& b) {
  using X = operand_of<A>;
  using Y = operand_of<B>;
  using Node = std::conditional_t<Op::template of<X, Y>, Comparison<Op, X, Y>, Binary<Op, X, Y>>;
  return Node(as_operand(std::forward<A>(a)), as_operand(std::forward<B>(b)));
}

template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator==(A&& a, B&& b) {
  return make_truth<Equal>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator!=(A&& a, B&& b) {
  return make_truth<Unequal>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator&&(A&& a, B&& b) {
  return make_truth<And>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, class B, IfArrayAndAny<A, B> = 0>
auto operator||(A&& a, B&& b) {
  return make_truth<Or>(std::forward<A>(a), std::forward<B>(b));
}
template <class A, IfArray<A> = 0>
auto operator!(A&& a) {
  return make_truth<Nor>(std::forward<A>(a), 0);
}

}  // namespace lumen

#endif
