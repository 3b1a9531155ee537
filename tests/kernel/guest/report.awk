# The tool's reports (list or info) as facts, one a line, to be compared with what the kernel says:
#   unit IDENTIFIER|ALIAS|VENDOR|PRODUCT|ALGORITHM
#   path IDENTIFIER|HOST:CHANNEL:TARGET:LUN|STATE|INTERFACE
#   volume IDENTIFIER|DEVICE|NAME|SIZE
# Columns are cut by their places, so that a column that is too wide or shifted shows as a difference.
function column(from, width, text) {
  text = substr($0, from, width)
  sub(/ +$/, "", text)
  return text
}
# A path's identifier is its SCSI address: host, channel, target and unit number in decimal, an F between them.
function address(digits, field) {
  if (split(digits, field, "F") != 4) return digits
  return field[1] + 0 ":" field[2] + 0 ":" field[3] + 0 ":" field[4] + 0
}

/^ +Alias +Vendor/ { section = "units"; next }
/^    Access State +Path Identifier/ { section = "paths"; next }
/^    Volumes:$/ { section = "volumes"; next }
/^    BSD Name +Name/ { next }
/^ *$/ { next }
/^ *[0-9]+ / && substr($0, 4, 1) == " " && $0 !~ /^    / {
  unit = column(56, 35)
  print "unit " unit "|" column(5, 16) "|" column(22, 16) "|" column(39, 16) "|" column(92, 22)
  next
}
section == "paths" { print "path " unit "|" address(column(26, 30)) "|" column(5, 20) "|" column(57, 16); next }
section == "volumes" { print "volume " unit "|" column(5, 15) "|" column(21, 40) "|" column(61, 32); next }
{ print "stray " $0 }
