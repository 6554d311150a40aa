#!/usr/bin/env bash
# Checks the Debian packages that `cpack -G DEB` wrote, without installing them: each package's
# architecture, version and files, that no file is in two packages, that the binaries are built
# for the architecture, and that every shared library a binary loads comes from a package its
# Depends name (the host's dpkg tells which package holds a library of that name).
# Usage: check-debs.sh PACKAGE-DIR DEBIAN-ARCHITECTURE
set -euo pipefail
dir="$1"
arch="$2"
multiarch="$(dpkg-architecture -a "$arch" -qDEB_HOST_MULTIARCH 2>/dev/null)"
host_multiarch="$(dpkg-architecture -qDEB_HOST_MULTIARCH)"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT

fail() {
  echo "check-debs: $*" >&2
  exit 1
}

declare -A expected=(
  [libtavobjectmodel1]="usr/lib/$multiarch/libtavobjectmodel.so.1 usr/lib/$multiarch/libtavplatform.so.1
    usr/lib/$multiarch/libtavproject.so.1"
  [libtavobjectmodel-dev]="usr/lib/$multiarch/libtavobjectmodel.so usr/lib/$multiarch/libtavplatform.so
    usr/lib/$multiarch/libtavproject.so usr/include/project/ProjectReader.h usr/include/project/ProjectModel.h
    usr/include/TavObjectModel/TavObjectModel.h usr/include/TavObjectModel/GroupValueOkaValue.h
    usr/include/platform/GroupValue.h usr/include/Tav/MeasureDuration.h
    usr/lib/$multiarch/cmake/TavObjectModel/TavObjectModelConfig.cmake
    usr/lib/$multiarch/cmake/TavObjectModel/TavObjectModelConfigVersion.cmake
    usr/lib/$multiarch/cmake/TavObjectModel/TavObjectModelTargets.cmake
    usr/lib/$multiarch/pkgconfig/tavobjectmodel.pc"
  [tavknx]="usr/bin/tavknx usr/share/tavobjectmodel/telegrams.txt usr/share/tavobjectmodel/log4cplus.properties"
)
# What each package may hold, so that a file installed without its component shows up.
declare -A allowed=(
  [libtavobjectmodel1]="^usr/lib/$multiarch/lib[a-z]+\\.so\\.[0-9.]+$"
  [libtavobjectmodel-dev]="^usr/include/|^usr/lib/$multiarch/(lib[a-z]+\\.so|cmake/TavObjectModel/.*|pkgconfig/tavobjectmodel\\.pc)$"
  [tavknx]="^usr/bin/tavknx$|^usr/share/tavobjectmodel/"
)
case "$arch" in
  amd64) machine="X86-64" ;;
  armhf) machine="ARM" ;;
  *) machine="" ;;
esac

shopt -s nullglob
debs=("$dir"/*.deb)
[ ${#debs[@]} -eq ${#expected[@]} ] || fail "expected ${#expected[@]} packages in $dir, found ${#debs[@]}"

version=""
for deb in "${debs[@]}"; do
  package="$(dpkg-deb -f "$deb" Package)"
  [ -n "${expected[$package]+x}" ] || fail "unexpected package $package ($deb)"
  [ "$(dpkg-deb -f "$deb" Architecture)" = "$arch" ] ||
    fail "$package is for $(dpkg-deb -f "$deb" Architecture), expected $arch"
  [ -z "$version" ] || [ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "$package has another version"
  version="$(dpkg-deb -f "$deb" Version)"

  root="$tmp/$package"
  dpkg-deb -x "$deb" "$root"
  (cd "$root" && find . -type f -o -type l | sed 's|^\./||' | sort) >"$tmp/$package.files"
  for file in ${expected[$package]}; do
    grep -qxF "$file" "$tmp/$package.files" || fail "$package lacks /$file"
  done
  # Internal headers stay in the source tree.
  if grep -E "^usr/include/.*/detail/" "$tmp/$package.files" >"$tmp/internal"; then
    fail "$package installs internal headers: $(tr '\n' ' ' <"$tmp/internal")"
  fi
  if grep -vE "${allowed[$package]}" "$tmp/$package.files" >"$tmp/stray"; then
    fail "$package holds files that belong elsewhere: $(tr '\n' ' ' <"$tmp/stray")"
  fi

  # Names of the packages this one depends on, without versions or alternatives.
  dpkg-deb -f "$deb" Depends | tr ',|' '\n\n' | sed 's/(.*)//; s/[[:space:]]//g; s/:.*//' |
    grep -v '^$' | sort -u >"$tmp/$package.depends" || true

  while IFS= read -r -d '' elf; do
    header="$(readelf -h "$elf")"
    if [ -n "$machine" ] && ! grep -qE "Machine:[[:space:]]+.*$machine" <<<"$header"; then
      fail "$package: /${elf#"$root"/} is not built for $arch"
    fi
    for needed in $(readelf -d "$elf" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
      # The project's own libraries come from the runtime package.
      if [[ "$needed" == libtavobjectmodel.so.* || "$needed" == libtavplatform.so.* ||
            "$needed" == libtavproject.so.* ]]; then
        provider="libtavobjectmodel1"
        [ "$package" = "$provider" ] && continue
      else
        provider="$(dpkg -S "/lib/$host_multiarch/$needed" "/usr/lib/$host_multiarch/$needed" 2>/dev/null |
          head -1 | sed 's/:.*//' || true)"
        [ -n "$provider" ] || fail "no installed package holds $needed (needed by $package)"
      fi
      grep -qxF "$provider" "$tmp/$package.depends" ||
        fail "$package loads $needed from $provider, which its Depends do not name"
    done
  done < <(find "$root" -type f \( -name '*.so*' -o -path '*/bin/*' \) -print0)
done

control="$(dpkg-deb --ctrl-tarfile "$dir"/libtavobjectmodel1_*.deb | tar -t)"
grep -qx './shlibs' <<<"$control" || fail "libtavobjectmodel1 has no shlibs file"
grep -qxF libtavobjectmodel1 "$tmp/libtavobjectmodel-dev.depends" ||
  fail "libtavobjectmodel-dev does not depend on libtavobjectmodel1"
shared="$(sort "$tmp"/*.files | uniq -d)"
[ -z "$shared" ] || fail "files in more than one package: $(tr '\n' ' ' <<<"$shared")"
echo "check-debs: ${#debs[@]} packages for $arch, version $version: architecture, files and dependencies right"
