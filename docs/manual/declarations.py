"""What the project's C headers declare, each with the comment above it."""
import re
from dataclasses import dataclass, field


@dataclass
class Function:
    name: str
    result: str
    parameters: list
    comment: str
    written: list  # the parameters as they are declared

    def part(self, tag):
        """The text of all `tag` blocks of the comment ("@return")."""
        blocks = re.findall(rf"{tag}\b(.*?)(?=@param|@return|\Z)", self.comment, re.DOTALL)
        return " ".join(" ".join(blocks).split())

    def described(self):
        return described(self.comment)


@dataclass
class Record:
    name: str
    fields: list = field(default_factory=list)  # (name, whether it has a comment)


def described(comment):
    """The parameters that `@param` names, several of them where they share a line."""
    names = set()
    for listed in re.findall(r"@param\s+(\w+(?:,\s*\w+)*)", comment):
        names |= set(re.findall(r"\w+", listed))
    return names


def text_of(comment):
    """A comment's text, without what frames it."""
    return "\n".join(re.sub(r"^\s*\*? ?", "", line) for line in comment.strip("/* \n").split("\n"))


def parameter_names(parameters):
    if parameters.strip() in ("", "void"):
        return []
    return [re.search(r"(\w+)\s*(?:\[\w*\])?$", p.strip())[1] for p in parameters.split(",") if p.strip() != "..."]


def written_parameters(parameters):
    return [" ".join(each.split()) for each in parameters.split(",")]


def functions(text):
    """Every function that a header declares; its comment is the one that ends on the line above it."""
    text = re.sub(r"//[^\n]*", "", text)
    found = []
    declaration = re.compile(
        r"(?P<comment>/\*\*(?:(?!\*/).)*\*/\n)?^(?!typedef|static|struct|return|#|_Static)(?P<result>[\w:][\w:\s*]*?[\s*])"
        r"(?P<name>\w+)\((?P<parameters>[^()]*)\)(?:\s*__attribute__\(\(.*?\)\)\))?\s*;", re.DOTALL | re.MULTILINE)
    for match in declaration.finditer(text):
        found.append(Function(match["name"], " ".join(match["result"].split()), parameter_names(match["parameters"]),
                              text_of(match["comment"] or ""), written_parameters(match["parameters"])))
    return found


def records(text):
    """Every record that a header lays out, each line of its body being one field."""
    found = []
    for name, body in re.findall(r"^(?:struct|typedef enum) (\w+) \{\n(.*?)^\}", text, re.DOTALL | re.MULTILINE):
        # A comment may go on over several lines.
        body = re.sub(r"/\*\*<(?:(?!\*/).)*\*/", "/**<*/", body, flags=re.DOTALL)
        record = Record(name)
        for line in filter(str.strip, body.split("\n")):
            member = re.search(r"(\w+)(?:\[\w+\])?\s*(?:=\s*\w+)?\s*[;,]?\s*(?:/\*\*<|$)", line)
            record.fields.append((member[1] if member else line.strip(), "/**<" in line))
        found.append(record)
    return found


def top_comment(text):
    return text_of(re.match(r"/\*\*.*?\*/", text, re.DOTALL)[0])
