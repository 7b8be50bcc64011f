#!/usr/bin/env python3
"""Writes files of a wanted size for the benchmarks: models, and what the yardsticks read.

    bench/generate.py model LINES          a model of about so many lines
    bench/generate.py declarations BYTES   a C file of declarations
    bench/generate.py m4 BYTES CALLS       macros in so many bytes, each called so many times (a fraction is possible)
    bench/generate.py cpp BYTES CALLS      the same for the C preprocessor
    bench/generate.py function OPERATIONS  a model with a function of so many operations
    bench/generate.py evaluate OPERATIONS  the body of an evaluate function, in quotes
    bench/generate.py system TEMPORARIES   differential equations, whose right sides have so many operations
    bench/generate.py nest DEPTH           the same with conditionals within one another

A model is made of groups that are alike in kind and size, so that a longer model is more of the same and times of
different sizes can be compared: constants and typed functions, a family of classes, then objects of these classes. The
same arguments give the same bytes.
"""

import random
import sys

QUANTITIES = """level inflow outflow pressure temperature density viscosity velocity displacement rotation torque force
stiffness damping inertia momentum energy power voltage current charge resistance inductance capacitance conductivity
heatFlow enthalpy moisture concentration reactionRate area height width thickness radius clearance angle speed loss
efficiency setPoint reference measured filtered demand limit offset gain phase frequency amplitude""".split()
UNITS = ["m", "kg", "s", "K", "Pa", "m/s", "m^2", "W", "J", "V", "A", "N/m", "kg/m^3"]
FUNCTIONS = ["Sin", "Cos", "Exp", "Sqrt", "Abs", "Log", "Tanh", "Floor"]
THINGS = ["Vessel", "Valve", "Pump", "Link", "Joint", "Roller", "Spring", "Filter", "Coil", "Section", "Cell", "Fan"]
SENTENCES = [
    "The balance of what comes in, what goes out and what is stored.",
    "Valid for small displacements about the point of rest.",
    "The sign follows the direction of the flow.",
    "Taken from the measurements of the second test rig.",
    "A lower bound keeps the quotient finite.",
    "Seen from the side of the drive.",
]


class Model:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.globals = []
        self.objects = []
        self.lines = 0
        self.definitions = 0

    def put(self, where, text):
        where.append(text)
        self.lines += text.count("\n") + 1

    def comment(self, where, indent=""):
        self.put(where, "%s(* %s *)" % (indent, self.random.choice(SENTENCES)))

    def number(self):
        kind = self.random.randrange(4)
        if kind == 0:
            return str(self.random.randrange(1, 1000))
        if kind == 1:
            return "%d.%d*^-%d" % (self.random.randrange(1, 10), self.random.randrange(100), self.random.randrange(1, 12))
        return "%d.%d" % (self.random.randrange(100), self.random.randrange(1000))

    def atom(self, names):
        kind = self.random.randrange(10)
        if kind < 6:
            return self.random.choice(names)
        if kind < 8:
            return self.number()
        return "%s[%s]" % (self.random.choice(FUNCTIONS), self.random.choice(names))

    def expression(self, names, terms):
        """A sum of products, folded over lines when it gets long."""
        text = ""
        width = 0
        for term in range(terms):
            factors = [self.atom(names) for _ in range(self.random.randrange(1, 4))]
            piece = self.random.choice("**/").join(factors)
            if self.random.randrange(5) == 0:
                piece = "(%s - %s)^%d" % (piece, self.atom(names), self.random.randrange(2, 5))
            if term:
                piece = self.random.choice([" + ", " - "]) + piece
            if width + len(piece) > 90:
                text += "\n     "
                width = 5
            text += piece
            width += len(piece)
        return text

    def nested(self, names, depth):
        """Brackets in brackets, a new line every few levels."""
        text = self.atom(names)
        for level in range(depth):
            kind = self.random.randrange(3)
            if kind == 0:
                text = "(%s + %s)" % (self.random.choice(names), text)
            elif kind == 1:
                text = "%s[%s]" % (self.random.choice(FUNCTIONS), text)
            else:
                text = "If[%s > %s, %s, %s]" % (self.random.choice(names), self.number(), text, self.number())
            if level % 6 == 5:
                text = "\n      " + text
        return text

    def value(self, names):
        """The right side of a definition: mostly short, now and then long or deep."""
        self.definitions += 1
        if self.definitions % 50 == 0:
            return self.expression(names, self.random.randrange(60, 150))
        if self.definitions % 70 == 0:
            return self.nested(names, self.random.randrange(20, 60))
        return self.expression(names, self.random.randrange(1, 7))

    def body(self, names, outside, count):
        """Visibility blocks with `count` definitions; the names join those that later definitions use."""
        declared = self.random.sample(QUANTITIES, count)
        for number, name in enumerate(declared):
            if number % 6 == 0:
                self.put(self.objects, "  %s:" % self.random.choice(["hide", "reveal", "expose"]))
            if number % 8 == 3:
                self.comment(self.objects, "    ")
            kind = number % 6
            if kind == 0:
                self.put(self.objects, '    real %s with unit = "%s" start = "%s";'
                         % (name, self.random.choice(UNITS), self.number()))
            elif kind == 1:
                self.put(self.objects, "    real %s := %s;" % (name, self.value(names + outside)))
            elif kind == 4:
                self.put(self.objects, "    %s[at_, scale_] := %s;" % (name, self.value(names + ["at", "scale"])))
                continue
            elif kind == 5:
                self.put(self.objects, "    %s := %s' == %s;" % (name, names[-1], self.value(names + outside)))
                continue
            else:
                self.put(self.objects, "    %s := %s;" % (name, self.value(names + outside)))
            names.append(name)
        return names

    def group(self, number):
        constants = ["%s%d" % (self.random.choice(QUANTITIES), number * 10 + i) for i in range(5)]
        self.comment(self.globals)
        for name in constants:
            self.put(self.globals, "real %s := %s;" % (name, self.number()))
        law = "%sLaw%d" % (self.random.choice(QUANTITIES), number)
        self.put(self.globals, "real %s[real x_, real knee_, int order_] :=\n  Module[{real s = 0.0, int i},\n"
                 "    For[i = 1, i <= order, i = i + 1, s = s + knee*x^i];\n    s];" % law)
        outside = constants + ["%s[2.0, %s, 3]" % (law, constants[0])]

        thing = self.random.choice(THINGS)
        base, derived, assembly = ("%s%s%d" % (kind, thing, number) for kind in ("Plain", "Lossy", "Coupled"))
        self.comment(self.objects)
        self.put(self.objects, "class %s(span, share)" % base)
        self.body(["span", "share"], outside, 12)
        self.put(self.objects, "end %s;\n" % base)

        self.put(self.objects, "class %s(span, share, leak) inherits %s(span*%s, share)" % (derived, base, self.number()))
        self.body(["span", "share", "leak"], outside, 12)
        self.put(self.objects, "end %s;\n" % derived)

        self.comment(self.objects)
        self.put(self.objects, "class %s(ratio, before)" % assembly)
        self.put(self.objects, "  part first inherits %s(ratio, %s, %s);" % (derived, self.number(), self.number()))
        self.put(self.objects, "  part second inherits %s(ratio/2, %s);" % (base, self.number()))
        self.put(self.objects, "  part stage[n] inherits %s(n*ratio, first`leak);" % base)
        self.body(["ratio", "first`span", "second`share", "before`span", "stage[1]`span"], outside, 12)
        self.put(self.objects, "  begin\n    first`span == second`span;\n    first`leak == before`span*%s\nend %s;\n"
                 % (self.number(), assembly))

        row, grid, single = ("%s%d" % (kind, number) for kind in ("row", "grid", "unit"))
        self.put(self.objects, "instance %s[i] inherits %s(i, %s, %s)" % (row, derived, self.number(), self.number()))
        self.body(["span", "share", "leak", "%s[i - 1]`span" % row], outside, 8)
        self.put(self.objects, "end %s;\n" % row)
        self.put(self.objects, "instance %s[i, j] inherits %s(i + j, %s[i, j - 1]`share) end;\n" % (grid, base, grid))
        self.put(self.objects, "instance %s inherits %s(%s, %s[3])" % (single, assembly, self.number(), row))
        self.body(["ratio", "%s[2]`leak" % row, "%s[1, 2]`span" % grid, "first`leak"], outside, 18)
        self.put(self.objects, "end %s;\n" % single)


def model(lines, seed=1):
    made = Model(seed)
    number = 0
    while made.lines < lines:
        number += 1
        made.group(number)
    head = 'model Generated;\n\npackages "Signals`", "Plots`";\n\nsymbol t;\n'
    return "\n".join([head] + made.globals + [""] + made.objects) + "\n"


def c_declarations(size, seed=2):
    rng = random.Random(seed)
    parts = ["/* Declarations only. */\n"]
    length = 0
    number = 0
    while length < size:
        number += 1
        names = rng.sample(QUANTITIES, 4)
        text = ("/* %s */\nstruct %s%d { double %s; int %s[%d]; struct %s%d *next; };\n"
                "extern double %s%d(const struct %s%d *from, int count, double %s);\n"
                "enum %sMode%d { %s%d_off, %s%d_on };\nextern double %s_%d, %s_%d;\n"
                % (rng.choice(SENTENCES), names[0], number, names[1], names[2], rng.randrange(1, 9), names[0], number,
                   names[1], number, names[0], number, names[2], names[3], number, names[0], number,
                   names[1], number, names[0], number, names[2], number))
        parts.append(text)
        length += len(text)
    return "".join(parts)


def macros(size, calls, define, join, call, seed=3):
    """Macros with bodies of definitions, and the calls of each right behind it."""
    rng = random.Random(seed)
    parts = []
    length = 0
    number = 0
    due = 0.0
    while length < size:
        number += 1
        lines = [join % {"name": name, "other": rng.choice(QUANTITIES), "value": rng.randrange(1, 100000)}
                 for name in rng.sample(QUANTITIES, 16)]
        text = define(number, lines)
        due += calls
        made = int(due)
        due -= made
        text += "".join(call % (number, i) for i in range(made))
        parts.append(text)
        length += len(text)
    return "".join(parts)


def m4_macros(size, calls):
    return macros(size, calls, lambda number, lines: "define(`class%d', `%s')dnl\n" % (number, "".join(lines)),
                  "$1_%(name)s := %(value)d.5*$1_%(other)s + (offset - $2)^2;\n", "class%d(object%d, gain)\n")


def cpp_macros(size, calls):
    return macros(size, calls, lambda number, lines: "#define class%d(o, p) %s\n" % (number, "\\\n".join(lines)),
                  "o##_%(name)s := %(value)d.5*o##_%(other)s + (offset - p)^2; ", "class%d(object%d, gain)\n")


# ---- operations
#
# An expression is a name, a number, or a tuple of an operation and its operands. Numbers have three digits behind the
# point, so that equal numbers are equal texts. What is divided by is a name or a number, so that no yardstick finds out
# that it is zero.

LOCALS = ["v%d" % number for number in range(20)]
PARAMETERS = ["x", "y"]
OPERATIONS_EACH = 9  # in one expression
FULL_FORM = {"+": "Plus", "-": "Subtract", "*": "Times", "/": "Divide"}


def operand(rng, names):
    return rng.choice(names) if rng.random() < 0.75 else "%d.%03d" % (rng.randrange(1, 100), rng.randrange(1000))


def expression_tree(rng, names, operations):
    if operations == 0:
        return operand(rng, names)
    if rng.random() < 0.15:
        return (rng.choice(["Sin", "Cos", "Exp", "Sqrt"]), expression_tree(rng, names, operations - 1))
    operator = rng.choice("++-**/")
    left = operations - 1 if operator == "/" else rng.randrange(operations)
    return (operator, expression_tree(rng, names, left), expression_tree(rng, names, operations - 1 - left))


def statements(operations, seed=4):
    """Assignments to locals, (name, expression); with the assignment each counts one operation more."""
    rng = random.Random(seed)
    for _ in range(operations // (OPERATIONS_EACH + 1)):
        yield rng.choice(LOCALS), expression_tree(rng, PARAMETERS + LOCALS, OPERATIONS_EACH)


def terms(operations, seed=5):
    """Terms of a sum; with the addition each counts one operation more."""
    rng = random.Random(seed)
    for _ in range(operations // (OPERATIONS_EACH + 1)):
        yield expression_tree(rng, PARAMETERS, OPERATIONS_EACH)


def infix(tree, call="%s(%s)"):
    if isinstance(tree, str):
        return tree
    if len(tree) == 2:
        return call % (tree[0] if "[" in call else tree[0].lower(), infix(tree[1], call))
    return "(%s %s %s)" % (infix(tree[1], call), tree[0], infix(tree[2], call))


def full_form(tree):
    if isinstance(tree, str):
        return "P$`" + tree if tree in PARAMETERS else tree
    return "%s[%s]" % (FULL_FORM.get(tree[0], tree[0]), ", ".join(map(full_form, tree[1:])))


def function_model(operations):
    body = "".join("  %s = %s;\n" % (name, infix(tree, "%s[%s]")) for name, tree in statements(operations))
    return ("model Speed;\n\nreal f[real x_, real y_] := Module[{%s},\n%s  v0];\n"
            % (", ".join("real %s = 0.0" % name for name in LOCALS), body))


def evaluate_model():
    return "model Speed;\n\nreal f[real x_, real y_] := x;\n"


def evaluate_body(operations):
    return '"Plus[%s]"\n' % ",\n".join(map(full_form, terms(operations)))


def distinct_operations(operations):
    """How many operations of the evaluate function's body differ in structure."""
    numbers = {}

    def number(tree):
        if isinstance(tree, str):
            return tree
        return numbers.setdefault((tree[0], *map(number, tree[1:])), len(numbers))

    for term in terms(operations):
        number(term)
    return len(numbers) + 1  # the sum itself


def llvm_function(operations):
    """The same sum for LLVM: it is added up term by term."""
    calls = {"Sin": "sin", "Cos": "cos", "Exp": "exp", "Sqrt": "sqrt"}
    operators = {"+": "fadd", "-": "fsub", "*": "fmul", "/": "fdiv"}
    lines = ["declare double @llvm.%s.f64(double)" % name for name in calls.values()]
    lines.append("define double @f(double %x, double %y) {")

    def emit(text):
        lines.append("  %%t%d = %s" % (len(lines), text))
        return "%%t%d" % (len(lines) - 1)

    def value(tree):
        if isinstance(tree, str):
            return "%" + tree if tree in PARAMETERS else tree
        values = tuple(map(value, tree[1:]))
        if tree[0] in calls:
            return emit("call double @llvm.%s.f64(double %s)" % (calls[tree[0]], values[0]))
        return emit("%s double %s, %s" % (operators[tree[0]], *values))

    total = None
    for term in terms(operations):
        total = value(term) if total is None else emit("fadd double %s, %s" % (total, value(term)))
    return "\n".join(lines + ["  ret double " + total, "}"]) + "\n"


def ginac_print(operations):
    return "".join("print_csrc(%s);\n" % infix(tree) for _, tree in statements(operations))


def maxima_print(operations):
    return "".join("fortran(%s)$\n" % infix(tree) for _, tree in statements(operations))


def maxima_optimize(operations):
    return ("display2d:false$\nlinel:1000000$\nprint(string(optimize(%s)))$\n"
            % " + ".join(map(infix, terms(operations))))


SYMPY = """import sympy
names = {name: sympy.Symbol(name) for name in %(names)r}
names.update({name: getattr(sympy, name) for name in ("sin", "cos", "exp", "sqrt")})
compiled = [sympy.parse_expr(line, names) for line in open(%(file)r)]
"""


def sympy_program(file, use):
    return SYMPY % {"names": PARAMETERS + LOCALS, "file": file} + use


def equations(right_sides):
    """A system in full-form text, from the right side of each variable."""
    sides = ["Equal[Derivative[1][oz$Type[%s, oz$Real]][t], %s]" % item for item in right_sides.items()]
    return "List[List[%s], List[t]]\n" % ",\n".join(sides)


SYSTEM_OPERATIONS = 8  # of an equation


def system(temporaries):
    """Equations with a conditional each, which share no operation; no time."""
    count = temporaries // SYSTEM_OPERATIONS
    right = {}
    for i in range(count):
        x, y = "x%d[t]" % i, "x%d[t]" % ((i + 1) % count)
        right["x%d" % i] = ("If[Greater[%s, 0.5], Plus[Times[%s, %s], Sin[%s]], Minus[Cos[Times[%s, 3.5]]]]"
                            % (x, x, y, x, y))
    return equations(right)


NEST_OPERATIONS = 8  # of a level


def nest(depth):
    """An equation with conditionals within one another, each in the first branch of the one around it."""
    inside = "x[t]"
    for level in range(depth):
        inside = ("If[Greater[Times[x[t], %d.5], y[t]], Plus[%s, Sin[Plus[y[t], %d.25]]], Cos[Times[x[t], %d.75]]]"
                  % (level, inside, level, level))
    return equations({"x": inside, "y": "x[t]"})


def main():
    kind = sys.argv[1] if len(sys.argv) > 2 else ""
    if kind == "model":
        sys.stdout.write(model(int(sys.argv[2])))
    elif kind == "declarations":
        sys.stdout.write(c_declarations(int(sys.argv[2])))
    elif kind == "function":
        sys.stdout.write(function_model(int(sys.argv[2])))
    elif kind == "evaluate":
        sys.stdout.write(evaluate_body(int(sys.argv[2])))
    elif kind == "system":
        sys.stdout.write(system(int(sys.argv[2])))
    elif kind == "nest":
        sys.stdout.write(nest(int(sys.argv[2])))
    elif kind in ("m4", "cpp") and len(sys.argv) == 4:
        make = m4_macros if kind == "m4" else cpp_macros
        sys.stdout.write(make(int(sys.argv[2]), float(sys.argv[3])))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
