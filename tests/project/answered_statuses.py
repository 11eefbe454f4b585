"""Which statuses of its own an operation of the library can answer, as its source and that of its helpers say."""
import re

STATUS = re.compile(r"\b(ZYM_DB_STATUS_\w+|ZYMDB_PCI_SETTING_\w+)\b")
# What an operation passes on, not a status that it gives a name.
PASSED_ON = {"ZYM_DB_STATUS_OK", "ZYM_DB_STATUS_ROW", "ZYM_DB_STATUS_DONE"}


def definitions(sources):
    """Bodies of the functions and methods that are defined outside of classes, by name."""
    bodies = {}
    for text in sources:
        text = re.sub(r"//[^\n]*", "", text)
        head = re.compile(r"^(?:template <[^\n]*>\n)?(?![ #}])[\w:<>*&,\s]*?\b(\w+)\((?:[^;{}]|\{\})*?\)\s*(?:const )?(?:try )?\{"
                          r"(.*?)^\}", re.DOTALL | re.MULTILINE)
        for name, body in head.findall(text):
            bodies.setdefault(name, []).append(body)
    return bodies


def statements(body):
    return [part.strip() for part in re.split(r"[;{}]", body)]


def answers(body):
    """The parts of a body whose value is answered, or kept as the status to be."""
    for statement in statements(body):
        for kept in re.findall(r"\breturn\b(.*)|\bstatus\s*=(?!=)(.*)", statement, re.DOTALL):
            yield from kept


def without_comparisons(text):
    """The statuses that a text compares with are not answered."""
    return re.sub(r"[!=]=\s*\w+", "", text)


def statuses(name, bodies, seen=None):
    """The named statuses that a function answers, itself or through the helpers whose status it answers."""
    seen = seen if seen is not None else set()
    if name in seen:
        return set()
    seen.add(name)
    found = set()
    for body in bodies.get(name, []):
        for text in answers(body):
            found |= set(STATUS.findall(without_comparisons(text)))
            for helper in set(re.findall(r"\b(\w+)\(", text)) & set(bodies):
                found |= statuses(helper, bodies, seen)
    return found - PASSED_ON
