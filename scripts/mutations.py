"""The small changes that scripts/mutate makes to a source, found in its tokens.

condition   a condition negated, always true, always false      return    nothing returned
boundary    < and <=, == and !=, && and ||, a ! dropped         text      one letter of a text or of a character
arithmetic  + and -, * and /, ++ and --, | and &                number    a number one more, one less; true and false
argument    two arguments exchanged, one emptied                drop      a statement dropped
message     a part of a text or of what is written dropped      move      two statements exchanged
row         an entry of a table dropped, a case forgotten       release   an object dropped that only lives and ends

And in src/ what a forwarder can do wrong: library() below.
"""
import bisect
import collections
import re

TOKEN = re.compile(r"""
  (?P<space>\s+|//[^\n]*|/\*.*?\*/)
| (?P<directive>^\#(?:\\\n|[^\n])*)
| (?P<text>R"(?P<mark>\w*)\(.*?\)(?P=mark)"|"(?:[^"\\\n]|\\.)*")
| (?P<letter>'(?:[^'\\\n]|\\.)+')
| (?P<number>\d[\w.']*)
| (?P<word>[A-Za-z_]\w*)
| (?P<sign><<=|>>=|\.\.\.|::|->|\+\+|--|<<|>>|&&|\|\||[-+*/%&|^=!<>]=|.)
""", re.X | re.S | re.M)
Token = collections.namedtuple("Token", "kind text start end")
Change = collections.namedtuple("Change", "kind start end new")

OTHER = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}
SUMS = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "|": "&", "&": "|", "|=": "&="}
OPEN, CLOSE = "([{", ")]}"
NO_CALL = {"if", "while", "for", "switch", "return", "sizeof", "catch", "decltype", "alignas", "noexcept"}
NO_STATEMENT = {"return", "using", "static_assert", "case", "default", "typedef", "goto", "public", "private", "friend", "extern"}


class Source:
    def __init__(self, text):
        self.text = text
        self.tokens = [Token(m.lastgroup if m.lastgroup != "mark" else "text", m.group(), m.start(), m.end())
                       for m in TOKEN.finditer(text)]
        self.tokens = [t for t in self.tokens if t.kind not in ("space", "directive")]
        self.partner, self.around = {}, []
        opened = []
        for i, token in enumerate(self.tokens):
            if token.kind == "sign" and token.text in CLOSE and opened:
                self.partner[i] = opened.pop()
                self.partner[self.partner[i]] = i
            self.around.append(opened[-1] if opened else None)  # Of an opening bracket: what is around it.
            if token.kind == "sign" and token.text in OPEN:
                opened.append(i)

    def said(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) and self.tokens[i].kind in ("sign", "word") else None

    def between(self, first, end):
        """The text of the tokens first to end - 1."""
        return self.text[self.tokens[first].start:self.tokens[end - 1].end] if first < end else ""

    def level(self, first, end):
        """The numbers of the tokens first to end - 1 that stand in no bracket which begins there."""
        i = first
        while i < end:
            yield i
            i = self.partner.get(i, i) + 1 if self.said(i) in tuple(OPEN) else i + 1

    def spaced(self, i):
        """Whether the operator stands between blanks: the layout tells it from a template's, a reference's and a sign."""
        return 0 < i < len(self.tokens) - 1 and self.tokens[i - 1].end < self.tokens[i].start and self.tokens[i].end < self.tokens[i + 1].start

    def parts(self, first, end, *signs):
        """[(first, end)] of what stands between the signs; a comma between template brackets separates nothing."""
        found, began, angles = [], first, 0
        for i in self.level(first, end):
            if self.said(i) == "<" and not self.spaced(i):
                angles += 1
            elif self.said(i) in (">", ">>") and not self.spaced(i):
                angles -= len(self.said(i))
            elif self.said(i) in signs and angles <= 0:
                found.append((began, i))
                began = i + 1
        return found + [(began, end)]

    def is_code(self, brace):
        return brace is not None and self.said(brace) == "{" and self.said(brace - 1) in (
            ")", "const", "noexcept", "override", "else", "do", "try", "]", "mutable", "bool", "int")


def conditions(s):
    for i, token in enumerate(s.tokens):
        if s.said(i) in ("if", "while") and s.said(i + 1) == "(":
            first, end = s.parts(i + 2, s.partner[i + 1], ";")[-1]
            start, stop, text = s.tokens[first].start, s.tokens[end - 1].end, s.between(first, end)
            named = [k for k in s.level(first, end) if s.said(k) == "="]
            if named:
                if s.said(i) == "if":
                    for wrong in ("!" + s.said(named[0] - 1) if s.said(named[0] - 1) != "]" else "false", "true", "false"):
                        yield Change("condition", stop, stop, "; " + wrong)
                continue
            for wrong in ["!(" + text + ")", "false"] + ["true"] * (s.said(i) == "if"):
                yield Change("condition", start, stop, wrong)
        elif s.said(i) == "?":
            first = i
            while first and s.around[first - 1] == s.around[i] and s.said(first - 1) not in (
                    "=", "+=", "return", ",", ";", "<<", ":", "?", "}") or s.said(first - 1) in tuple(CLOSE) and s.said(first - 1) != "}":
                first = s.partner.get(first - 1, first - 1) if s.said(first - 1) in (")", "]") else first - 1
            if first < i:
                yield Change("condition", s.tokens[first].start, s.tokens[i - 1].end, "!(" + s.between(first, i) + ")")
        elif s.said(i) == "case":
            colon = next(k for k in range(i, len(s.tokens)) if s.said(k) == ":")
            yield Change("row", token.start, s.tokens[colon].end, "")


def operators(s):
    for i, token in enumerate(s.tokens):
        if token.kind == "sign" and s.spaced(i):
            if token.text in OTHER:
                yield Change("boundary", token.start, token.end, OTHER[token.text])
            if token.text in SUMS:
                yield Change("arithmetic", token.start, token.end, SUMS[token.text])
            if token.text in ("+", "<<") and s.around[i] is not None:
                end = i + 1
                while s.around[end] == s.around[i] and s.said(end) not in ("+", "<<", ",", ";", "?", ":", "&&", "||", ")", "}", "]", "==", "<"):
                    end = s.partner.get(end, end) + 1
                yield Change("message", token.start, s.tokens[end - 1].end, "")
        elif token.text in ("++", "--") and token.kind == "sign":
            yield Change("arithmetic", token.start, token.end, "--" if token.text == "++" else "++")
        elif s.said(i) == "!":
            yield Change("boundary", token.start, token.end, "")
        elif s.said(i) == "return" and s.said(i + 1) not in (";", "{", "nullptr", "true", "false"):
            end = next(k for k in s.level(i + 1, len(s.tokens)) if s.said(k) == ";")
            yield Change("return", s.tokens[i + 1].start, s.tokens[end].start, "{}")
        elif s.said(i) in ("break", "continue") and s.said(i + 1) == ";":
            yield Change("drop", token.start, token.end, "")


def literals(s):
    for token in s.tokens:
        if token.kind == "text" and not token.text.startswith("R") and len(token.text) > 2:
            at = len(token.text) // 2
            while at > 1 and (token.text[at - 1] == "\\" or token.text[at] == "\\"):
                at -= 1
            if token.text[at] != '"':
                yield Change("text", token.start + at, token.start + at + 1, "~" if token.text[at] != "~" else "#")
        elif token.kind == "letter":
            yield Change("text", token.start, token.end, "'~'" if token.text != "'~'" else "'#'")
        elif token.kind == "number":
            m = re.fullmatch(r"(0x[0-9a-fA-F']+|[0-9']+)(\.\d+|)(\w*)", token.text)
            value = int(m.group(1).replace("'", ""), 16 if m.group(1).startswith("0x") else 10) if m else 0
            for other in [value + 1] + [value - 1] * (value > 0) if m else []:
                yield Change("number", token.start, token.end, str(other) + m.group(2) + m.group(3))
        elif token.text in ("true", "false"):
            yield Change("number", token.start, token.end, "false" if token.text == "true" else "true")


def arguments(s):
    for i in range(1, len(s.tokens)):
        word = s.tokens[i - 1]
        if s.said(i) not in ("(", "{") or i not in s.partner or not (word.kind == "word" or word.text == ">" and s.said(i) == "("):
            continue
        if word.text in NO_CALL or s.is_code(i) or s.partner[i] == i + 1:
            continue
        if s.said(s.partner[i] + 1) in ("{", ":", "const") and s.tokens[i - 2].kind in ("word", "sign") and s.said(i - 2) not in ("(", "return", ",", "=", ":", "{"):
            continue  # The head of a function.
        parts = s.parts(i + 1, s.partner[i], ",")
        texts = [s.between(*part) for part in parts]
        for k, (first, end) in enumerate(parts):
            if first < end and (end - first > 1 or s.tokens[first].kind == "word") and texts[k] not in ("nullptr", "false"):
                yield Change("argument", s.tokens[first].start, s.tokens[end - 1].end, "{}")
            if k and "" not in texts and texts[k] != texts[k - 1]:
                yield Change("argument", s.tokens[parts[k - 1][0]].start, s.tokens[end - 1].end, texts[k] + ", " + texts[k - 1])


def rows(s):
    for i in range(1, len(s.tokens)):
        if s.said(i) != "{" or s.is_code(i) or s.said(i - 1) != "=" or i not in s.partner:
            continue
        for first, end in s.parts(i + 1, s.partner[i], ","):
            if first < end:
                comma = end < s.partner[i]
                yield Change("row", s.tokens[first].start, s.tokens[end if comma else end - 1].end, "")


def statements(s):
    """Simple ones: they end with a semicolon and have no block of their own."""
    found = []
    for i in range(1, len(s.tokens)):
        before = s.said(i - 1)
        if not s.is_code(s.around[i]) or s.said(i) in (*CLOSE, ";"):
            continue
        controlled = before == "else" or before == ")" and s.said(s.partner[i - 1] - 1) in ("if", "for", "while", "constexpr")
        if not controlled and before not in (";", "{", "}"):
            continue
        if s.said(i) in (None, "{") or s.said(i) in NO_STATEMENT | NO_CALL | {"else", "do", "try", "break", "continue"}:
            continue
        end = next((k for k in s.level(i, s.partner.get(s.around[i], 0)) if s.said(k) == ";"), None)
        if end is not None:
            found.append((i, end, controlled))
    declaration = re.compile(r"(?:(?:static|const|constexpr) )*[\w:]+(?:<.*?>)?[&*]* [&*]?(\w+|\[.*?\])(?= ?[=({;]|$)", re.S)
    plain = lambda text: declaration.match(text) and "(" not in text  # Where it stands does not matter.
    for number, (first, end, controlled) in enumerate(found):
        words = s.between(first, end)
        declared = declaration.match(words)
        declared = None if declared and words.split(None, 1)[0] in ("delete", "throw") else declared
        rest = s.between(end + 1, s.partner[s.around[first]])
        names = re.findall(r"\w+", declared.group(1)) if declared else []
        used = lambda text: any(re.search(r"\b%s\b" % name, text) for name in names)
        if not declared or not used(rest):
            yield Change("release" if declared else "drop", s.tokens[first].start, s.tokens[end].end, ";" if controlled else "")
        if number + 1 < len(found) and found[number + 1][0] == end + 1 and not controlled:
            other, stop, _ = found[number + 1]
            following = s.between(other, stop + 1)
            if not used(following) and not plain(words) and not plain(following):
                yield Change("move", s.tokens[first].start, s.tokens[stop].end, following + " " + words + ";")


def library(s):
    """What a forwarder can do wrong: ask once and keep the answer, copy, take another operation, host or lock, do it twice."""
    call = r"(m_host\.|assistant->|getEMPAdapter\(\)->)(\w+)\(([^()]*)\)"
    operations = collections.defaultdict(list)
    for m in re.finditer(call, s.text):
        operations[m.group(1)].append((m.group(2), m.group(3).count(",")))
    for m in re.finditer(call, s.text):
        alike = [name for name, many in operations[m.group(1)] if name != m.group(2) and many == m.group(3).count(",")]
        for other in dict.fromkeys(alike[-1:] + alike[:1]):
            yield Change("operation", m.start(2), m.end(2), other)
        for part in re.finditer(r"\b[a-z]\w*\b(?=[,)]|$)", m.group(3)):
            signature = s.text[s.text.rfind("\n\n", 0, m.start()):m.start()]
            reference = re.search(r"& %s\b" % part.group(), signature)
            copy = "std::decay_t<decltype(%s)>(%s)" if reference else "std::move(%s)"
            yield Change("copy", m.start(3) + part.start(), m.start(3) + part.end(), copy.replace("%s", part.group()))
    for pattern, kind, new in ((r"\bm_host\.", "host", "m_instance->m_host."), (r"(?<=Lock lock\()m_mutex", "lock", "m_dalMutex"),
                               (r"(?<=Lock lock\()m_dalMutex", "lock", "m_mutex"), (r"const auto assistant =", "cache", "static const auto assistant ="),
                               (r"(?<=\) \{)(?!\s+const Lock)(?=\s+\w)", "lock", " const std::lock_guard<std::mutex> added(m_mutex);"),
                               (r"static (?=std::shared_ptr<Dev)|static (?=int count)", "cache", ""), (r" \| std::ios::app", "row", ""),
                               (r"std::make_shared<", "operation", "std::shared_ptr<")):
        for m in re.finditer(pattern, s.text):
            yield Change(kind, m.start(), m.end(), new)
    for change in list(statements(s)):
        if change.kind == "drop" and not change.new:
            yield Change("double", change.end, change.end, " " + s.text[change.start:change.end])


KINDS = (conditions, operators, literals, arguments, rows, statements)


def changes(text, of_library):
    """[(kind, line, before, after, changed text)], each text once."""
    source, seen, found = Source(text), {text}, []
    starts = [0] + [m.end() for m in re.finditer("\n", text)]
    for kind in KINDS + ((library,) if of_library else ()):
        for change in kind(source):
            changed = text[:change.start] + change.new + text[change.end:]
            if changed in seen:
                continue
            seen.add(changed)
            line = bisect.bisect_right(starts, change.start)
            last = text.find("\n", change.end)
            shown = [" ".join(part.split()) for part in (text[starts[line - 1]:last], changed[starts[line - 1]:last + len(changed) - len(text)])]
            found.append((change.kind, line, *shown, changed))
    return sorted(found, key=lambda c: c[1])
