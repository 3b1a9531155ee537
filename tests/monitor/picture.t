`picture` draws ports, units and the paths between them, in each of its formats.

  $ . "$TESTDIR/setup.sh"
  $ with 'entries[202]["details"]["hostPort"] = entries[201]["details"]["hostPort"]' 'entries[200]["details"]["suspended"] = True'
  $ monitor try.json picture | sed 's/20..-.*UTC/TIME/;/^$/d'
  Generation 7, TIME: 2 units, 6 paths, 2 host ports, 4 target ports
  H1  2100001b32000001  2 units, 4 paths
  H2  2100001b32000002  1 unit, 2 paths
  T1  50060e8000000010  2 units, 2 paths
  T2  50060e8000000011  2 units, 2 paths
  T3  50060e8000000012  1 unit, 1 path
  T4  50060e8000000013  1 unit, 1 path
  archive (dm-4)  ! hangs on host port H1  ! suspended
    H1  =====A=====  T1  50%  sdf
    H1  =====A=====  T2  50%  sdg
  finance (dm-3)
    H1  =A=                T1  0%    sdb
    H1  xFx                T4  0%    sde
    H2  xxxxxxxxFxxxxxxxx  T2  100%  sdc
    H2  -N-                T3  0%    sdd
    =A=  active, optimized
    -N-  active, not optimized
    xFx  failed or disabled

Units that look alike share a box. With --unfold each has its own; no two boxes overlap, and ports are repeated:

  $ tavrenix-lab-generate 1000 2 >many.json
  $ monitor many.json picture | grep -A 1 x1000
  Unit 1 x1000
    H1  ====A====    -  50%  1000 paths
  $ for format in svg html dot; do
  >   monitor many.json picture --output many.$format; monitor many.json picture --unfold --format $format >each.$format
  >   echo $(grep -c 'data-box="[0-9]*"><title>\|^  u[0-9]* \[' many.$format each.$format)
  > done
  many.svg:1 each.svg:1000
  many.html:1 each.html:1000
  many.dot:1 each.dot:1000
  $ python3 - <<'END'
  > import xml.etree.ElementTree as tree
  > svg = {"s": "http://www.w3.org/2000/svg"}
  > drawing = tree.parse("each.svg").getroot()
  > height = float(drawing.get("height"))
  > for band in drawing.findall("s:g", svg)[1:]:
  >     rectangles = [box.find("s:rect", svg) for kind in ("port", "box") for box in band.findall(f"s:g[@class='{kind}']", svg)]
  >     spots = sorted((float(one.get("x")), float(one.get("y")), float(one.get("height"))) for one in rectangles)
  >     for (x, y, tall), (next_x, next_y, _) in zip(spots, spots[1:]): assert x != next_x or y + tall <= next_y, (x, y)
  >     assert spots and max(y + tall for _, y, tall in spots) < 1200 < height, "a band is no taller than a screen or two"
  > END
  $ dot -Tsvg many.dot | grep -c '<g id="edge'
  2
  $ monitor try.json picture -o /nowhere/a.svg
  tavrenix-lab-monitor: /nowhere/a.svg: cannot be written beside: No such file or directory
  [2]
  $ with 'image["effectiveUser"] = 1' && monitor try.json picture -o many.svg; grep -c 2100001B many.svg
  tavrenix-lab-monitor: only the superuser, with CAP_SYS_ADMIN, may ask the multipath driver; run it as root
  2
