# What `multipath -ll` prints, as facts: the units as in report.awk, and of the paths whether the driver uses them.
BEGIN {
  shown["round-robin"] = "Modified Round Robin"
  shown["queue-length"] = "Least Queue Depth"
  shown["service-time"] = "Least Bytes"
}
/ dm-[0-9]+ / {
  alias = $1
  wwid = $2
  gsub(/[()]/, "", wwid)
  identifier = toupper(substr(wwid, 2))
  product = $0
  sub(/.* dm-[0-9]+ /, "", product)
  vendor = product
  sub(/,.*/, "", vendor)
  sub(/^[^,]*,/, "", product)
  first_group = 1
  next
}
/policy=/ {
  if (first_group) {
    policy = $0
    sub(/.*policy='/, "", policy)
    sub(/ .*/, "", policy)
    print "unit " identifier "|" alias "|" vendor "|" product "|" shown[policy]
  }
  first_group = 0
  next
}
match($0, /[0-9]+:[0-9]+:[0-9]+:[0-9]+ /) {
  split(substr($0, RSTART), word, / +/)
  print "use " identifier "|" word[1] "|" word[4]
}
