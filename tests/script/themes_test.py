#!/usr/bin/env python3
"""The themes that are shipped can be read: by everybody, also with deficient colour vision."""
import pathlib
import plistlib
import re
import sys

READABLE, HIGH = 4.5, 7.0  # contrast ratios of text on its background

# Linear RGB as seen with a complete deficiency (Machado, Oliveira and Fernandes, 2009).
VISION = {
    "full": ((1, 0, 0), (0, 1, 0), (0, 0, 1)),
    "protan": ((0.152286, 1.052583, -0.204868), (0.114503, 0.786281, 0.099216), (-0.003882, -0.048116, 1.051998)),
    "deutan": ((0.367322, 0.860646, -0.227968), (0.280085, 0.672501, 0.047413), (-0.011820, 0.042940, 0.968881)),
    "tritan": ((1.255528, -0.076749, -0.178779), (-0.078411, 0.930809, 0.147602), (0.004733, 0.691367, 0.303900)),
}
# Scopes that must not look alike, by colour or by style.
APART = ("", "comment", "string", "keyword", "entity.name.function")


def colour(text):
    if not re.fullmatch(r"#[0-9A-Fa-f]{6}([0-9A-Fa-f]{2})?", text):
        raise ValueError(f"no colour: {text}")
    red, green, blue, *alpha = bytes.fromhex(text[1:])
    return (red, green, blue), (alpha[0] if alpha else 255) / 255


def over(below, text):
    above, alpha = colour(text)
    return tuple(b * (1 - alpha) + a * alpha for a, b in zip(above, below))


def linear(component):
    c = component / 255
    return c / 12.92 if c <= 0.04045 else ((c + 0.055) / 1.055) ** 2.4


def seen(rgb, vision):
    light = [linear(c) for c in rgb]
    return [min(1, max(0, sum(f * c for f, c in zip(row, light)))) for row in VISION[vision]]


def luminance(light):
    return sum(f * c for f, c in zip((0.2126, 0.7152, 0.0722), light))


def contrast(a, b, vision):
    low, high = sorted((luminance(seen(a, vision)), luminance(seen(b, vision))))
    return (high + 0.05) / (low + 0.05)


def distance(a, b, vision):
    return sum((x ** (1 / 2.2) - y ** (1 / 2.2)) ** 2 for x, y in zip(seen(a, vision), seen(b, vision))) ** 0.5


def faults_of(theme):
    name, rules = theme["name"], theme["settings"]
    base = rules[0]["settings"]
    ground, text = colour(base["background"])[0], colour(base["foreground"])[0]
    least = HIGH if "Contrast" in name else READABLE
    looks = {}
    for rule in rules:
        settings = rule["settings"]
        here = over(ground, settings.get("background", base["background"]))
        front = over(here, settings["foreground"]) if "foreground" in settings else text
        selected = over(ground, base["selection"])
        grounds = [here, over(ground, base["lineHighlight"])] + ([selected] if rule is rules[0] else [])
        for vision in VISION:
            for back in grounds:
                if (ratio := contrast(front, back, vision)) < least:
                    yield f"{rule['name']} has a contrast of {ratio:.2f} ({vision})"
            if least == HIGH and (ratio := contrast(front, selected, vision)) < READABLE:
                yield f"{rule['name']} has a contrast of {ratio:.2f} when it is selected ({vision})"
        for scope in rule.get("scope", "").split(", "):
            looks.setdefault(scope, (front, settings.get("fontStyle")))
    for i, one in enumerate(APART):
        for other in APART[i + 1:]:
            (a, style_a), (b, style_b) = looks[one], looks[other]
            for vision in VISION:
                if style_a == style_b and distance(a, b, vision) < 0.12:
                    yield f"{one or 'text'} and {other} look alike ({vision})"


def main():
    faults, uuids = [], set()
    kinds, high = {"light": 0, "dark": 0}, {"light": 0, "dark": 0}
    for file in sorted((pathlib.Path(__file__).resolve().parents[2] / "share/Themes").glob("*.qnTheme")):
        theme = plistlib.loads(file.read_bytes())
        faults += [f"{file.name}: {fault}" for fault in faults_of(theme)]
        ground = colour(theme["settings"][0]["settings"]["background"])[0]
        kind = "dark" if luminance(seen(ground, "full")) < 0.18 else "light"
        kinds[kind] += 1
        high[kind] += "Contrast" in theme["name"]
        if theme["uuid"] in uuids:
            faults.append(f"{file.name}: its uuid is another one's too")
        uuids.add(theme["uuid"])
    if min(kinds.values()) < 4 or min(high.values()) < 1:
        faults.append(f"too few themes: {kinds}, of high contrast {high}")
    print("\n".join(faults) or f"{kinds} are readable")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
