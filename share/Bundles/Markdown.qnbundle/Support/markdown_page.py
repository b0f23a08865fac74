"""Markdown as HTML: CommonMark's blocks and spans, tables, task lists and struck-out text. Of the HTML in it plain
tags without attributes remain, and no URL leads to a script."""
import os
import re

import quirnote

MOST_LEVELS = 30
PLAIN_TAGS = set("""b i u s em strong code kbd samp var sub sup small del ins mark q abbr cite br hr p div span center
    details summary dl dt dd ul ol li blockquote pre table thead tbody tr th td h1 h2 h3 h4 h5 h6 a img""".split())
FENCE = re.compile(r" {0,3}(`{3,}|~{3,})[ \t]*([^`\s]*)[^`]*$")
HEADING = re.compile(r" {0,3}(#{1,6})(?:[ \t]|$)")
RULE = re.compile(r" {0,3}([-*_])(?:[ \t]*\1){2,}[ \t]*$")
ITEM = re.compile(r"( {0,3})([-+*]|\d{1,9}[.)])(?=[ \t]|$)")
REFERENCE = re.compile(r" {0,3}\[([^\]]{1,200})\]:[ \t]*<?([^\s>]+)>?[^\n]*$")
RULER = re.compile(r"[ \t]*\|?(?:[ \t]*:?-+:?[ \t]*\|)*[ \t]*:?-+:?[ \t]*\|?[ \t]*$")
TAG = re.compile(r"""<(/?)([A-Za-z][A-Za-z0-9]*)((?:[^<>"']|"[^"<]*"|'[^'<]*')*)>""")
AUTOLINK = re.compile(r"<((?:https?://|mailto:)[^\s<>]+|[\w.+-]+@[\w-]+(?:\.[\w-]+)+)>")
SIGNS = re.compile(r"[\\`<&\[\]!*_~\n]|[^\\`<&\[\]!*_~\n]+")
DESTINATION = re.compile(r"""\(\s*(?:<([^<>\n]*)>|((?:[^\s()\\]|\\.|\([^\s()]*\))*))(?:\s+(?:"[^"]*"|'[^']*'))?\s*\)""")


def slug_of(text, seen):
    """As the sites that show Markdown make them."""
    slug = re.sub(r"[^\w\- ]", "", text.strip().lower()).replace(" ", "-")
    seen[slug] = seen.get(slug, -1) + 1
    return f"{slug}-{seen[slug]}" if seen[slug] else slug


def is_safe(url):
    scheme = re.match(r"\s*([^:/?#]*):", url)
    return not scheme or scheme[1].lower() in ("http", "https", "mailto")


class Page:
    """`headings` are level, plain text, identifier and the number of the line, from 1."""

    def __init__(self, text, folder=""):
        self.folder, self.headings, self.seen, self.references = folder, [], {}, {}
        lines = [(line.expandtabs(4), number) for number, line in enumerate(text.split("\n"), 1)]
        self.unclosed_fence = 0
        if lines[0][0].rstrip() == "---":
            end = next((i for i, (line, _) in enumerate(lines[1:], 1) if line.rstrip() in ("---", "...")), 0)
            lines = lines[end + 1:] if end else lines
        for line, _ in lines:
            if found := REFERENCE.match(line):
                self.references.setdefault(" ".join(found[1].casefold().split()), found[2])
        self.html = self.blocks(lines, 0)

    # Blocks

    def begins_block(self, line):
        return (not line.strip() or FENCE.match(line) or HEADING.match(line) or RULE.match(line)
                or re.match(r" {0,3}>", line)
                or (found := ITEM.match(line)) and line[found.end():].strip() and found[2] in "-+*1.1)")

    def blocks(self, lines, level, tight=False):
        result, at = [], 0
        while at < len(lines):
            line = lines[at][0]
            if not line.strip() or REFERENCE.match(line):
                at += 1
            elif level >= MOST_LEVELS:
                result.append(f"<pre>{quirnote.escape(line)}</pre>\n")
                at += 1
            elif found := FENCE.match(line):
                at = self.fence(lines, at, found, result)
            elif HEADING.match(line):
                self.heading(result, len(HEADING.match(line)[1]), line.strip().lstrip("#"), lines[at][1])
                at += 1
            elif RULE.match(line):
                result.append("<hr>\n")
                at += 1
            elif re.match(r" {0,3}>", line):
                at = self.quote(lines, at, level, result)
            elif ITEM.match(line):
                at = self.list(lines, at, level, result)
            elif line.startswith("    "):
                end = at
                while end < len(lines) and (lines[end][0].startswith("    ") or not lines[end][0].strip()):
                    end += 1
                code = "\n".join(each[0][4:] for each in lines[at:end]).rstrip()
                result.append(f"<pre>{quirnote.escape(code)}</pre>\n")
                at = end
            elif "|" in line and at + 1 < len(lines) and "-" in lines[at + 1][0] and RULER.match(lines[at + 1][0]):
                at = self.table(lines, at, result)
            else:
                at = self.paragraph(lines, at, result, tight)
        return "".join(result)

    def heading(self, result, level, text, line):
        text = re.sub(r"(?:^|[ \t])#+$", "", text.strip()).strip()
        spans = self.spans(text)
        plain = self.plain(spans)
        slug = slug_of(plain, self.seen)
        self.headings.append((level, plain, slug, line))
        result.append(f'<h{level} id="{quirnote.escape(slug)}">{spans}</h{level}>\n')

    def fence(self, lines, at, found, result):
        marks, language = found[1], found[2]
        indent, end = len(lines[at][0]) - len(lines[at][0].lstrip(" ")), at + 1
        while end < len(lines):
            line = lines[end][0].strip()
            if line.startswith(marks) and not line.strip(marks[0]):
                break
            end += 1
        else:
            self.unclosed_fence = self.unclosed_fence or lines[at][1]
        code = "\n".join(re.sub(f"^ {{0,{indent}}}", "", each[0]) for each in lines[at + 1:end])
        of = f' class="language-{quirnote.escape(language)}"' if language else ""
        result.append(f"<pre><code{of}>{quirnote.escape(code)}</code></pre>\n")
        return end + 1

    def quote(self, lines, at, level, result):
        inner, end = [], at
        while end < len(lines):
            line, number = lines[end]
            if found := re.match(r" {0,3}> ?", line):
                inner.append((line[found.end():], number))
            elif inner[-1][0].strip() and not self.begins_block(line):
                inner.append((line, number))
            else:
                break
            end += 1
        result.append(f"<blockquote>\n{self.blocks(inner, level + 1)}</blockquote>\n")
        return end

    def list(self, lines, at, level, result):
        first = ITEM.match(lines[at][0])
        kind, items, loose, end, content = first[2][-1], [], False, at, 0
        while end < len(lines):
            line, number = lines[end]
            found = ITEM.match(line)
            blank = end > at and not lines[end - 1][0].strip()
            if items and line.strip() and line.startswith(" " * content):
                loose = loose or blank and not ITEM.match(line[content:])
                items[-1].append((line[content:], number))
            elif found and found[2][-1] == kind and not RULE.match(line):
                after = line[found.end():]
                gap = len(after) - len(after.lstrip(" "))
                content = found.end() + (gap if 0 < gap < 5 and after.strip() else 1)
                loose = loose or blank
                items.append([(line[content:], number)])
            elif not line.strip():
                items[-1].append(("", number))
            elif not blank and not self.begins_block(line) and not found:
                items[-1].append((line.strip(), number))
            else:
                break
            end += 1
        ordered = first[2][0].isdigit()
        start = int(first[2][:-1]) if ordered else 1
        tag = ("ol" if ordered else "ul") + (f' start="{start}"' if start != 1 else "")
        result.append(f"<{tag}>\n")
        for item in items:
            box = re.match(r"\[([ xX])\] ", item[0][0])
            if box:
                item[0] = (item[0][0][4:], item[0][1])
            mark = f'<input type="checkbox" disabled{" checked" if box[1] != " " else ""}> ' if box else ""
            result.append(f"<li>{mark}{self.blocks(item, level + 1, not loose).strip()}</li>\n")
        result.append(f"</{tag[:2]}>\n")
        return end

    def table(self, lines, at, result):
        def cells(line):
            return [c.strip().replace("\\|", "|")
                    for c in re.split(r"(?<!\\)\|", re.sub(r"^\|", "", re.sub(r"(?<!\\)\|$", "", line.strip())))]
        marks = cells(lines[at + 1][0])
        sides = [{(True, True): "center", (False, True): "right"}.get((m.startswith(":"), m.endswith(":")), "")
                 for m in marks]

        def row(line, tag):
            parts = (cells(line) + [""] * len(sides))[:len(sides)]
            return "<tr>" + "".join(f'<{tag}{f" align={side}" if side else ""}>{self.spans(part)}</{tag}>'
                                    for part, side in zip(parts, sides)) + "</tr>\n"
        result.append("<table>\n" + row(lines[at][0], "th"))
        end = at + 2
        while end < len(lines) and not self.begins_block(lines[end][0]) and "|" in lines[end][0]:
            result.append(row(lines[end][0], "td"))
            end += 1
        result.append("</table>\n")
        return end

    def paragraph(self, lines, at, result, tight):
        end = at + 1
        while end < len(lines) and not self.begins_block(lines[end][0]):
            if re.match(r" {0,3}(?:=+|-+)[ \t]*$", lines[end][0]):
                break
            end += 1
        text = "\n".join(line.lstrip() for line, _ in lines[at:end]).rstrip()
        under = lines[end][0].strip() if end < len(lines) else ""
        if under and not under.strip("=") or under and not under.strip("-") and under[0] == "-" and (
                re.match(" {0,3}-", lines[end][0]) and not ITEM.match(lines[end][0] + "x")):
            self.heading(result, 1 if under[0] == "=" else 2, text.replace("\n", " "), lines[at][1])
            return end + 1
        spans = self.spans(text)
        whole = TAG.match(text) or text.startswith("<!--")
        result.append(f"{spans}\n" if tight or whole else f"<p>{spans}</p>\n")
        return end

    # Spans

    def plain(self, spans):
        import html
        return html.unescape(re.sub(r"<[^>]*>", "", spans))

    def url(self, url, of_image=False):
        """What a link leads to; nothing for what would run."""
        import urllib.parse
        url = url.strip()
        if not is_safe(url):
            return ""
        if re.match(r"[A-Za-z][A-Za-z0-9+.-]*:|#|//", url) or not self.folder:
            return url
        path = os.path.normpath(os.path.join(self.folder, urllib.parse.unquote(
            re.split("[?#]", url)[0], errors="surrogateescape")))
        if "\0" in path:
            return ""
        return "qn-file://localhost" + quirnote.percent(path, "-._~/") if of_image else quirnote.place_url(path, 1)

    def html_tag(self, found):
        name = found[2].lower()
        if name not in PLAIN_TAGS:
            return quirnote.escape(found[0])
        if found[1]:
            return f"</{name}>"
        kept = ""
        for attribute in re.finditer(r"""([A-Za-z]+)\s*=\s*(?:"([^"]*)"|'([^']*)'|([^\s"'>]+))""", found[3]):
            key, value = attribute[1].lower(), attribute[2] or attribute[3] or attribute[4] or ""
            if (name, key) in (("a", "href"), ("img", "src")):
                kept += f' {key}="{quirnote.escape(self.url(self.plain(value), name == "img"))}"'
            elif key in ("width", "height", "align", "alt") and re.fullmatch(r"[\w%. ,-]*", value):
                kept += f' {key}="{value}"'
        return f"<{name}{kept}>"

    def link(self, text, at):
        """A link or picture whose opening bracket is before `at`: its end, its text and its URL."""
        if text.find("]", at, at + 2000) < 0:
            return None
        depth, end = 1, at
        for found in re.finditer(r"\\.|[\[\]]", text[at:at + 2000], re.DOTALL):
            depth += {"[": 1, "]": -1}.get(found[0], 0)
            if depth == 0:
                end = at + found.end()
                break
        if depth:
            return None
        inner = text[at:end - 1]
        if found := DESTINATION.match(text, end):
            return found.end(), inner, re.sub(r"\\([!-/:-@\[-`{-~])", r"\1", found[1] or found[2] or "")
        found = re.compile(r"\[([^\[\]]{0,200})\]").match(text, end)
        name = found[1] if found and found[1] else inner
        url = self.references.get(" ".join(name.casefold().split()))
        return None if url is None else (found.end() if found else end, inner, url)

    def spans(self, text, level=0):
        parts, at = [], 0  # texts, and runs of marks as lists: sign, count, can open, can close

        def escape_plain(piece):
            return quirnote.escape(piece)
        while at < len(text):
            sign = text[at]
            if sign == "\\" and text[at + 1:at + 2] and text[at + 1] in "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~\n":
                parts.append("<br>\n" if text[at + 1] == "\n" else quirnote.escape(text[at + 1]))
                at += 2
            elif sign == "`":
                run = re.compile("`+").match(text, at)[0]
                end = re.compile(f"(?<!`){run}(?!`)").search(text, at + len(run))
                if end:
                    code = text[at + len(run):end.start()].replace("\n", " ")
                    code = code[1:-1] if code[:1] == code[-1:] == " " and code.strip() else code
                    parts.append(f"<code>{quirnote.escape(code)}</code>")
                    at = end.end()
                else:
                    parts.append(run)
                    at += len(run)
            elif sign == "<":
                if text.startswith("<!--", at):
                    end = text.find("-->", at)
                    at = end + 3 if end >= 0 else len(text)
                elif found := AUTOLINK.match(text, at):
                    url = found[1] if ":" in found[1] else "mailto:" + found[1]
                    parts.append(f'<a href="{quirnote.escape(url)}">{quirnote.escape(found[1])}</a>')
                    at = found.end()
                elif found := TAG.match(text, at):
                    parts.append(self.html_tag(found))
                    at = found.end()
                else:
                    parts.append("&lt;")
                    at += 1
            elif sign == "&" and (found := re.compile(r"&(?:[A-Za-z][A-Za-z0-9]{1,31}|#\d{1,7}|#x[0-9A-Fa-f]{1,6});").match(text, at)):
                parts.append(found[0])
                at = found.end()
            elif sign in "[!" and text.startswith(("[", "!["), at) and level < 5 and (
                    found := self.link(text, at + 1 + (sign == "!"))):
                end, inner, url = found
                if sign == "!":
                    parts.append(f'<img src="{quirnote.escape(self.url(url, True))}" alt="{quirnote.escape(inner)}">')
                else:
                    parts.append(f'<a href="{quirnote.escape(self.url(url))}">{self.spans(inner, level + 1)}</a>')
                at = end
            elif sign in "*_~":
                end = at
                while text[end:end + 1] == sign:
                    end += 1
                before, after = text[at - 1:at] if at else " ", text[end:end + 1] or " "
                opens, closes = not after.isspace(), not before.isspace()
                if sign == "_":
                    opens, closes = opens and not before.isalnum(), closes and not after.isalnum()
                parts.append([sign, end - at, opens, closes])
                at = end
            elif sign == "\n":
                hard = bool(parts) and isinstance(parts[-1], str) and parts[-1].endswith("  ")
                parts.append("<br>\n" if hard else "\n")
                at += 1
            else:
                found = SIGNS.match(text, at)
                parts.append(escape_plain(found[0]))
                at = found.end()
        return self.emphasized(parts)

    def emphasized(self, parts):
        opened = []  # indexes of the runs that are open
        for i, part in enumerate(parts):
            if not isinstance(part, list):
                continue
            sign, count, opens, closes = part
            made_before = ""
            while closes and count:
                nearest = range(len(opened) - 1, max(-1, len(opened) - 50), -1)
                if (place := next((k for k in nearest if parts[opened[k]][0] == sign), None)) is None:
                    break
                at = opened[place]
                used = min(2, count, parts[at][1])
                if sign == "~" and used < 2:
                    break
                tag = "del" if sign == "~" else ("em", "strong")[used - 1]
                del opened[place + 1:]
                parts[at][1] -= used
                parts[at].append(f"<{tag}>")
                made_before += f"</{tag}>"
                count -= used
                if not parts[at][1]:
                    opened.pop()
            part[1] = count
            part.insert(4, made_before)
            if opens and count:
                opened.append(i)
        # A run is what closes, what is left over as text, and what it opens, the inner ones last.
        return "".join(part if isinstance(part, str) else
                       part[4] + part[0] * part[1] + "".join(reversed(part[5:])) for part in parts)
