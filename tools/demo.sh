# shellcheck shell=bash
# A session with tavrenix-lab on a copy of a sample image. ./run check runs the same commands under valgrind.

demo_image=samples/small.json
demo_lun=600A0B8000112233445566778899AABB
demo_path=0101
demo_commands=(
  "list"
  "info --id $demo_lun"
  "modify lun --id $demo_lun --algorithm LeastIO --batchCount 32"
  "modify path --lun $demo_lun --id $demo_path --disable"
  "info --id $demo_lun"
)

# in_demo_folder COMMAND...: runs the command with one more argument, a new folder that holds a copy of the image.
in_demo_folder() (
  folder=$(mktemp -d)
  trap 'rm -rf -- "$folder"' EXIT
  cp -- "$demo_image" "$folder/image.json"
  "$@" "$folder"
)

demo_show() {
  local folder=$1
  local -a words
  local command i=0
  for command in "${demo_commands[@]}"; do
    read -ra words <<<"$command"
    printf '\n$ tavrenix-lab image.json %s\n' "$command"
    build/demo/lab/tavrenix-lab "$folder/image.json" "${words[@]}" | tee "$folder/$i.out"
    i=$((i + 1))
  done
  # The tool ends with status 0 even if it refuses a change, so the last report shows whether the changes succeeded.
  grep -q 'Least Queue Depth' "$folder/4.out" || fail "the change of the algorithm does not show in the last report"
  grep -q "Disabled  *$demo_path" "$folder/4.out" || fail "the change of the path does not show in the last report"
  printf '\nWhat the two changes did to the report:\n'
  diff --unified=0 "$folder/1.out" "$folder/4.out" | sed 1,3d || true
}

demo_session() {
  in_demo_folder demo_show
  cat <<END

The whole state of the simulated host is the image file. To go on by yourself:
  cp $demo_image image.json
  build/demo/lab/tavrenix-lab image.json list
END
}
