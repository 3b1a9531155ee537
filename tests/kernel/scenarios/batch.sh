# shellcheck shell=busybox
# A batch count that the kernel does not take is refused aloud; the table stays as it was.
start_udev
debug_units 1 2
maps_by_hand round-robin
before=$(dmsetup table mpatha)
unit=$(identifier mpatha)
tool modify lun -i "$unit" -b 16 >/tmp/out
same "a count of 16: status" 0 $?
has "a count of 16: message" '^Unable to (change )?batch count: .' "$(cat /tmp/out)"
same "a count of 16: table" "$before" "$(dmsetup table mpatha)"
same "a count of 1: message" "" "$(tool modify lun -i "$unit" -b 1)"
has "an algorithm with a count of 7: message" '^Unable to (change )?batch count: .' "$(tool modify lun -i "$unit" -a LeastIO -b 7)"
same "an algorithm with a count of 7: the algorithm is set" "Least Queue Depth" "$(algorithm_of mpatha)"
has "a count of 0: message" '^Specified --batchCount is out of range 0 - 0xFFFFFFFF$' "$(tool modify lun -i "$unit" -b 0)"
