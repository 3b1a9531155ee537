# What `multipath -ll` prints, as facts: the units as in report.awk, and of the paths whether the driver uses them.
BEGIN {
  shown["round-robin"] = "Modified Round Robin"
  shown["queue-length"] = "Least Queue Depth"
  shown["service-time"] = "Least Bytes"
}
# ALIAS (WWID) dm-N VENDOR,PRODUCT
/ dm-[0-9]+ / {
  identifier = toupper(substr($2, 3, length($2) - 3))
  identity = $0
  sub(/.* dm-[0-9]+ /, "", identity)
  sub(/,/, "|", identity)
  unit = "unit " identifier "|" $1 "|" identity
}
# The selector in quotes, of the first group alone.
/policy=/ && unit != "" {
  split($0, word, /[' ]+/)
  for (i in word) if (word[i] in shown) print unit "|" shown[word[i]]
  unit = ""
}
match($0, /[0-9]+:[0-9]+:[0-9]+:[0-9]+ /) {
  split(substr($0, RSTART), word, / +/)
  print "use " identifier "|" word[1] "|" word[4]
}
