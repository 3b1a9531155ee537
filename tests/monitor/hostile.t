Devices and administrators can choose any names. No verb prints a control character of them in any field, nor a
character that turns or hides text.

  $ . "$TESTDIR/setup.sh"
  $ cat >nasty.py <<'END'
  > nasty = ["\x1b[31mred", "\x9b2J", "a\nb", "a\rb", "a\tb", "zero\0byte", "del\x7f", "\u202egnp.exe", "\u2066x", "\u200bx",
  >          "\ufeffx", "\u2028x", "x\"} 1\nforged 1", "back\\slash", "<script>", "&amp;", "'; rm -rf /", "${HOME}", "%s%n", ""]
  > texts = [0]
  > def taint(value):
  >     if isinstance(value, str):
  >         texts[0] += 1
  >         return nasty[texts[0] % len(nasty)] + str(texts[0])
  >     if isinstance(value, dict):
  >         return value if any(key.startswith("$") for key in value) else {key: taint(one) for key, one in value.items()}
  >     return [taint(one) for one in value] if isinstance(value, list) else value
  > for entry in image["entries"]:
  >     for part in ("properties", "details", "disk"):
  >         if part in entry:
  >             entry[part] = taint(entry[part])
  > END
  $ for shift in 0 7 13; do
  >   with "$(sed "s/texts = \[0\]/texts = [$shift]/" nasty.py)"
  >   [ -e base.json ] || monitor try.json baseline record base.json >/dev/null 2>>'out of errors'
  >   for verb in "status --all" "status -u dm-3" check json metrics "baseline diff base.json" picture "picture -f dot --unfold"; do
  >     LC_ALL=C.UTF-8 monitor try.json $verb >>"out of ${verb%% -*}" 2>>'out of errors' || :
  >   done
  >   for format in html svg dot; do monitor try.json picture -o "out of $shift.$format" 2>>"out of errors"; done
  >   dot -Tsvg "out of $shift.dot" -o "dot $shift.svg"
  > done
  $ LC_ALL=C monitor try.json status --all >>'out of status' 2>>'out of errors'
  $ LC_ALL=C.UTF-8 monitor try.json top --batch --delay 1 --unfold >'out of top' 2>>'out of errors'
  $ python3 - <<'END'
  > import glob, re
  > for name in glob.glob("out of *"):
  >     text = open(name, encoding="utf-8", newline="").read()
  >     found = set(re.findall("[^\n\x20-\x7e]", text))
  >     if found or not text: print(name, sorted(found))
  > sample = re.compile(r'(#.*|\w+({(\w+="([^"\\]|\\["\\])*",?)*})? [0-9.]+)')
  > print(*[line for line in open("out of metrics") if not sample.fullmatch(line.rstrip("\n"))], end="")
  > END

The pictures have the expected elements and no other. The page allows one script to run, and has just that one:

  $ cat >pages.py <<'END'
  > import base64, glob, hashlib, html.parser, re, xml.etree.ElementTree as tree
  > class Page(html.parser.HTMLParser):
  >     tags, names = set(), set()
  >     def handle_starttag(self, tag, attributes):
  >         self.tags.add(tag); self.names |= {name for name, _ in attributes if name.startswith(("on", "href", "src"))}
  > for name in glob.glob("out of *.html"):
  >     text = open(name).read()
  >     Page().feed(text)
  >     script, = re.findall("<script>(.*?)</script>", text, re.DOTALL)
  >     assert base64.b64encode(hashlib.sha256(script.encode()).digest()).decode() in text, "the hash of the script"
  > print(*sorted(Page.tags), *Page.names)
  > for names in ("out of *.svg", "dot *.svg"):
  >     print(*sorted({one.tag.split("}")[1] for name in glob.glob(names) for one in tree.parse(name).iter()}))
  > shown = {one.text for one in tree.parse("out of 0.svg").iter() if one.tag.endswith("title")}
  > print(*sorted(text for text in shown if text.startswith(("H", "T")) and "\\" in text))
  > END
  $ python3 pages.py
  body button details div g h1 head header html input meta p path rect script section span style summary svg table td text th title tr
  g path rect style svg text title
  g path polygon svg text title
  H4: del\x7F26 H5: del\x7F66 H6: \u{2066}x8 T4: \u{200B}x9 T5: \u{202E}gnp.exe27 T6: \u{202E}gnp.exe67
  $ python3 -c 'import json; json.load(open("base.json"))'
