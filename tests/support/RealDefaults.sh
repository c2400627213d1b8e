#!/usr/bin/env bash
# Records, then checks, the real user's GNUstep defaults folder around the
# suite: `RealDefaults.sh record FILE` before every test, `check FILE` after
# the last.  The tests run with a private GNUSTEP_CONFIG_FILE; this proves
# that none of them wrote into the user's own defaults.  GNUstep places them
# from its system configuration and the password database's home (not HOME),
# so both are read here the same way.
set -euo pipefail
action=$1
state=$2

folder() {
  local home dir
  home=$(getent passwd "$(id -u)" | cut -d: -f6)
  dir=$(env -u GNUSTEP_CONFIG_FILE gnustep-config --variable=GNUSTEP_USER_DEFAULTS_DIR 2>/dev/null || true)
  dir=${dir:-GNUstep/Defaults}
  case "$dir" in
    /*) printf '%s\n' "$dir" ;;
    *) printf '%s/%s\n' "$home" "$dir" ;;
  esac
}

# Every file with its checksum; GNUstep's transient lock folder is left out.
listing() {
  local dir
  dir=$(folder)
  echo "folder: $dir"
  if [ -d "$dir" ]; then
    (cd "$dir" && find . -path ./.lck -prune -o -type f -print0 | sort -z | xargs -0 -r sha256sum)
  else
    echo "absent"
  fi
}

case "$action" in
  record)
    listing > "$state"
    echo "recorded the real defaults folder: $(head -1 "$state")" ;;
  check)
    if ! listing | diff -u "$state" -; then
      echo "the real user's defaults folder changed during the suite" >&2
      exit 1
    fi
    echo "the real user's defaults folder is unchanged" ;;
  *) echo "usage: $0 record|check FILE" >&2; exit 2 ;;
esac
