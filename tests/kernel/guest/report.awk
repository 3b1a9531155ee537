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
# A path's identifier is the text of its SCSI address, each byte as two hexadecimal digits.
function address(hex, i, text) {
  for (i = 1; i < length(hex); i += 2)
    text = text sprintf("%c", digit(substr(hex, i, 1)) * 16 + digit(substr(hex, i + 1, 1)))
  return text ~ /^[0-9]+:[0-9]+:[0-9]+:[0-9]+$/ ? text : hex
}
function digit(d) { return index("0123456789ABCDEF", d) - 1 }

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
