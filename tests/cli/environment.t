Environment variables change nothing, whatever they say to other programs. Each command is run in an empty environment
and in a hostile one; what it prints on both streams, its status and the image that it leaves are compared.

  $ cp "$TESTDIR"/../../samples/small.json sample.json
  $ unit=600A0B8000112233445566778899AABB
  $ lab=$(command -v tavrenix-lab) tool=$(command -v tavrenix)
  $ hostile="POSIXLY_CORRECT=1 POSIX_ME_HARDER=1 LC_ALL=C.UTF-8 LANG=de_DE.UTF-8 LANGUAGE=de:fr TZ=Pacific/Kiritimati
  > LOCPATH=/nonexistent NLSPATH=/nonexistent/%N OUTPUT_CHARSET=UTF-16 TMPDIR=/nonexistent HOME=/nonexistent
  > PATH=/nonexistent COLUMNS=7 LINES=3 TERM=dumb IFS=0 ENV=/nonexistent BASH_ENV=/nonexistent MALLOC_PERTURB_=165
  > DM_DEV_DIR=/nonexistent DM_DISABLE_UDEV=1 DM_DEFAULT_NAME_MANGLING_MODE=hex DM_ABORT_ON_INTERNAL_ERRORS=1
  > LVM_SYSTEM_DIR=/nonexistent LVM_SUPPRESS_FD_WARNINGS=1 SYSFS_PATH=/nonexistent UDEV_LOG=debug
  > SYSTEMD_LOG_LEVEL=debug SYSTEMD_COLORS=1 MULTIPATH_SOCKET_NAME=@nonexistent"
  $ in_environment() { output=$1 variables=$2; shift 2; cp sample.json image.json
  > env -i $variables "$@" > "$output" 2>&1; echo "status $?" >> "$output"; cat image.json >> "$output"; }
  $ same() { in_environment clean "" "$@"; in_environment soiled "$hostile" "$@"; cmp clean soiled; }

The front end on a simulated host, also where it complains and where options stand behind words:

  $ for arguments in "" list "info --id $unit" "info --id NONE" "info --wrong" "list more words --id" \
  > "modify lun --id $unit --algorithm LeastIO --batchCount 3" "modify --batchCount 3 lun --id $unit" \
  > "modify path --lun $unit --id 0101 --disable" "modify path --lun $unit --id"; do
  >   same "$lab" image.json $arguments || echo "with: $arguments"
  > done

Changes did arrive, so there was something to compare:

  $ same "$lab" image.json modify lun --id $unit --algorithm LeastIO --batchCount 3; grep -o '"Batch Count": 3' soiled
  "Batch Count": 3

The tool on this machine, whatever it has:

  $ for arguments in "" list "info --id $unit" "info --wrong" "modify lun --id $unit --algorithm LeastIO"; do
  >   same "$tool" $arguments || echo "with: $arguments"
  > done

Images that cannot be used, and help:

  $ same "$lab" /nonexistent list
  $ same "$lab" --help
