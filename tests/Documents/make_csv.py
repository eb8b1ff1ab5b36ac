"""Writes rows in every encoding, and numbers with what exact arithmetic says of them."""
import csv, decimal, random, re
random.seed(1)
codecs = ["utf-8", "utf-16-le", "utf-16-be", "utf-32-le", "utf-32-be", "cp1252", "latin-1"]
for i, codec in enumerate(codecs):
    letters = ["a", ",", '"', "\n", "\r\n", "\r", " ", "'", "1", "\t", "\xe9", ""]
    letters += ["\u20ac", "\u0178"] if codec != "latin-1" else []
    letters += ["\ufeff", "\U0001f600", "\u2028"] if i < 5 else []
    rows = [["".join(random.choices(letters, k=random.randrange(9))) for _ in range(random.randrange(2, 6))]
            for _ in range(300)]
    rows[0][0] = "start"
    for mark in (False, True) if i < 5 else (False,):
        with open(f"in{i}{int(mark)}", "w", newline="", encoding=codec) as out:
            out.write("\ufeff" if mark else "")
            csv.writer(out).writerows(rows)
decimal.getcontext().prec = 1000
shape = re.compile(r"-?(0|[1-9][0-9]*)?(\.[0-9]*)?([eE][+-]?[0-9]+)?$")
with open("numbers.csv", "w") as out:
    for _ in range(20000):
        if random.random() < 0.5:
            text = "".join(random.choices("0123456789.-+e", k=random.randrange(1, 9)))
        else:
            text = str(random.randrange(10 ** random.randrange(1, 24))) + random.choice(["", ".5", ".25e-7", "e-330", "e280"])
            if random.random() < 0.5:
                text = "%.*e" % (random.randrange(40), float(text))
        kept = shape.match(text) is not None and re.match(r"-?\.?[0-9]", text) is not None
        if kept:
            exact = decimal.Decimal(text).normalize()
            size = len(exact.as_tuple().digits)
            kept = float("-inf") < float(text) < float("inf") and decimal.Decimal("%.*e" % (size - 1, float(text))) == exact
        print(text, "number" if kept else "text", float(text) if kept else "", sep=",", file=out)
