"""Writes the result after an expression. What may stand in one is listed here, and nothing else is done: no
names are looked up, and no number grows beyond some thousand digits."""
import ast
import math
import operator
import re
from fractions import Fraction

import quirnote

MOST_CHARACTERS, MOST_BITS, MOST_PLACES, DIGITS = 1000, 8192, 100, 15


class NoArithmetic(Exception):
    pass


def rounded(number, places=Fraction()):
    if abs(places) > MOST_PLACES:
        raise OverflowError
    return round(number, int(places))


NAMES = {"pi": Fraction(math.pi), "e": Fraction(math.e), "tau": Fraction(math.tau)}
BY_FLOAT = {name: getattr(math, name) for name in (
    "sqrt", "sin", "cos", "tan", "asin", "acos", "atan", "exp", "log", "log2", "log10", "degrees", "radians")}
EXACT = {"abs": abs, "floor": math.floor, "ceil": math.ceil, "round": rounded, "min": min, "max": max}
FUNCTIONS = {**EXACT, **BY_FLOAT}
OPERATORS = {ast.Add: operator.add, ast.Sub: operator.sub, ast.Mult: operator.mul,
             ast.Div: operator.truediv, ast.FloorDiv: operator.floordiv, ast.Mod: operator.mod}


def bits(number):
    return max(number.numerator.bit_length(), number.denominator.bit_length())


def power(base, exponent):
    if exponent.denominator != 1:
        return Fraction(float(base) ** float(exponent))
    if bits(base) * abs(exponent) > MOST_BITS:
        raise OverflowError
    return base ** int(exponent)


def value(node, source):
    """Each result is a fraction that is not too large."""
    if isinstance(node, ast.Constant) and type(node.value) in (int, float):
        text = ast.get_source_segment(source, node).replace("_", "")
        if len(text.lower().partition("e")[2]) > 3 and not text.lower().startswith("0x"):
            raise OverflowError
        result = Fraction(node.value) if isinstance(node.value, int) else Fraction(text)
    elif isinstance(node, ast.BinOp) and isinstance(node.op, ast.Pow):
        result = power(value(node.left, source), value(node.right, source))
    elif isinstance(node, ast.BinOp) and type(node.op) in OPERATORS:
        result = Fraction(OPERATORS[type(node.op)](value(node.left, source), value(node.right, source)))
    elif isinstance(node, ast.UnaryOp) and isinstance(node.op, (ast.UAdd, ast.USub)):
        result = value(node.operand, source) * (-1 if isinstance(node.op, ast.USub) else 1)
    elif isinstance(node, ast.Name) and node.id in NAMES:
        result = NAMES[node.id]
    elif (isinstance(node, ast.Call) and isinstance(node.func, ast.Name) and node.args and not node.keywords
          and node.func.id in FUNCTIONS):
        arguments = [value(each, source) for each in node.args]
        if node.func.id in BY_FLOAT:
            arguments = map(float, arguments)
        result = Fraction(FUNCTIONS[node.func.id](*arguments))
    else:
        raise NoArithmetic
    if bits(result) > MOST_BITS:
        raise OverflowError
    return result


def written(number):
    if number.denominator == 1 and abs(number) < 10 ** 30:
        return str(number)
    return format(float(number), f".{DIGITS}g")


def result_of(text):
    signs = str.maketrans({"×": "*", "·": "*", "÷": "/", "−": "-", "^": "**"})
    source = text.translate(signs).strip()
    if not re.search("[a-z]", source):
        source = re.sub(r"(?<=\d),(?=\d{3}(?!\d))", "", source)
    if not source:
        quirnote.tip("There is nothing to calculate.")
    if len(source) > MOST_CHARACTERS:
        quirnote.tip(f"This is longer than {MOST_CHARACTERS} characters.")
    try:
        return written(value(ast.parse(source, mode="eval").body, source))
    except ZeroDivisionError:
        quirnote.tip("This divides by zero.")
    except (OverflowError, RecursionError, MemoryError):
        quirnote.tip("The numbers get too large, or the brackets are too deep.")
    except (SyntaxError, UnicodeError, NoArithmetic):
        pass
    except (ValueError, TypeError):
        # A null byte is one, too.
        quirnote.tip("This has no value.")
    quirnote.tip("This is no arithmetic: there are numbers, + - * / // % ^, round brackets, pi, e, tau and "
                 + ", ".join(FUNCTIONS) + ".")


def calculated(line):
    asked = line.partition("=")[0].rstrip()
    return f"{asked} = {result_of(asked)}"


given, line_end = quirnote.without_line_end(quirnote.read())
lines = given.split("\n")
quirnote.write("\n".join(calculated(line) if line.strip() or len(lines) == 1 else line for line in lines)
               + line_end)
