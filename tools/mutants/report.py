"""Reports which changes the tests noticed, and reads the reasons why no test can notice the others."""

import textwrap
from collections import Counter


def read_reasons(path):
    """Returns the reason for each key of a change. In the file, the keys follow their reason, indented."""
    reasons, reason, open_reason = {}, "", False
    for line in path.read_text(encoding="utf-8").splitlines() if path.exists() else []:
        if not line.strip() or line.startswith("#"):
            open_reason = False
        elif line[0] == " ":
            reasons[line.strip()] = reason
            open_reason = False
        else:
            reason = f"{reason} {line.strip()}" if open_reason else line.strip()
            open_reason = True
    return reasons


def folder_of(one):
    return one.file.rpartition("/")[0] or "."


def table(mutants, survivors):
    total = Counter(folder_of(one) for one in mutants)
    alive = Counter(folder_of(one) for one in survivors)
    lines = [f"{'folder':<16}{'changes':>8}{'killed':>8}{'of 100':>8}"]
    rows = [(name, total[name], alive[name]) for name in sorted(total)]
    for name, count, left in rows + [("together", sum(total.values()), sum(alive.values()))]:
        lines.append(f"{name:<16}{count:>8}{count - left:>8}{100 * (count - left) / count:>8.1f}")
    return "\n".join(lines)


def too_low(mutants, survivors, share):
    """Returns the top folders in which the tests notice less than `share` of 100 changes."""
    total = Counter(one.file.split("/")[0] for one in mutants)
    alive = Counter(one.file.split("/")[0] for one in survivors)
    return [name for name in sorted(total) if 100 * (total[name] - alive[name]) < share * total[name]]


def show(title, mutants, unreached):
    if not mutants:
        return
    print(f"\n{title}:")
    for one in mutants:
        nobody = " (no test gets there)" if one.number in unreached else ""
        print(f"  {one.file}:{one.line}: {one.function}{nobody}\n      was {one.was}\n      now {one.now}")


def report(mutants, survivors, unreached, reasons, share, whole):
    """Prints the report. Returns the exit status: 1 if the tests notice less than `share` of 100 in a folder, or
    if all changes were tried and one that survives has no reason."""
    print("\n" + table(mutants, survivors))
    by_reason = {}
    for one in survivors:
        by_reason.setdefault(reasons.get(one.key), []).append(one)
    for reason, ones in by_reason.items():
        if reason is not None:
            show(textwrap.fill(f"Survive, and why: {reason.rstrip(chr(46))}", 110), ones, unreached)
    new = by_reason.get(None, [])
    show("Survive without a reason in tools/mutants/survivors.txt", new, unreached)
    keys = {one.key for one in survivors}
    mine = {one.key for one in mutants}
    noticed = [key for key in reasons if key in mine and key not in keys]
    gone = [key for key in reasons if key not in mine] if whole else []
    for title, listed in (("Listed there, but killed now", noticed), ("Listed there, but no such change now", gone)):
        if listed:
            print(f"\n{title}:")
            print("\n".join(f"  {key}" for key in listed))
    if new:
        print("\nTheir lines for that list:")
        print("\n".join(f"  {one.key}" for one in new))
    count = len(mutants)
    killed = count - len(survivors)
    print(f"\n{killed} of {count} changes were noticed by the tests, {len(new)} survivors have no reason")
    low = too_low(mutants, survivors, share)
    if low:
        print(f"Fewer than {share} of 100 in: {' '.join(low)}")
    return 1 if low or (whole and new) else 0
