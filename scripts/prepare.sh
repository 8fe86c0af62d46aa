# Sourced by the other scripts: goes to the project's folder and installs what
# packages.txt lists and the machine lacks. A second run installs nothing.

cd "$(dirname "${BASH_SOURCE[0]}")/.."

sudo_if_needed() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_missing_packages() {
  local missing
  missing=$(grep -v '^#' scripts/packages.txt | while read -r package; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
  done)
  [ -n "$missing" ] || return 0
  echo "installing: $(echo $missing)"
  sudo_if_needed apt-get update -qq
  # Tests start their own servers: a package's service must not be started meanwhile.
  local policy=/usr/sbin/policy-rc.d wrote_policy=
  if [ ! -e "$policy" ]; then
    printf '#!/bin/sh\nexit 101\n' | sudo_if_needed tee "$policy" >/dev/null
    sudo_if_needed chmod +x "$policy"
    wrote_policy=yes
  fi
  # shellcheck disable=SC2086
  sudo_if_needed env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends $missing >/dev/null
  [ -z "$wrote_policy" ] || sudo_if_needed rm -f "$policy"
}

install_missing_packages
