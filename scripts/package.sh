# What ./dev package does, in the project's folder with the functions of dev. The same sources on the
# same machine give the same bytes: SOURCE_DATE_EPOCH is the time of the last commit if not set.

archive() {  # folder, name [, file]: makes build/package/FILE, NAME.tar.gz if not given, of FOLDER/NAME
  tar --directory "$1" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 \
    --numeric-owner --mode=go=rX,u+w --format=posix \
    --pax-option=exthdr.name=%d/PaxHeaders/%f,delete=atime,delete=ctime -cf - "$2" |
    gzip -9n >"build/package/${3:-$2.tar.gz}"
}

packages() {
  scripts/setup.sh build package python wasm web arm64 windows windows32
  SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
  export SOURCE_DATE_EPOCH
  local version out=build/package stage=build/package-work
  version=$(sed -n 's/^project(ombrilo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
  rm -rf $out $stage
  mkdir -p $out $stage

  # Debian puts libraries into a folder of the architecture; where it is does not change what is built.
  build release -DOMBRILO_TESTS=OFF \
    -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)"
  (cd build/release && cpack -G DEB -B "$OLDPWD/$stage/deb" >"$OLDPWD/$stage/deb.txt" 2>&1) ||
    { cat $stage/deb.txt; return 1; }
  cp $stage/deb/*.deb $out
  build release -DOMBRILO_TESTS=OFF -DCMAKE_INSTALL_LIBDIR=lib
  build arm64 -DOMBRILO_TESTS=OFF -DCMAKE_INSTALL_LIBDIR=lib
  local preset name
  for preset in release arm64; do
    name=ombrilo-$version-linux-$([ $preset = arm64 ] && echo arm64 || uname -m)
    cmake --install build/$preset --prefix "$stage/$name" --strip >/dev/null
    archive $stage "$name"
  done

  build windows32 -DOMBRILO_TESTS=OFF
  build windows -DOMBRILO_TESTS=OFF -DOMBRILO_X86_DLL="$PWD/build/windows32/ombrilo.dll"
  cmake --build build/windows --target windows_package
  cp build/windows/package/*.zip build/windows/package/*.nupkg $out

  bindings/python/build.sh build/release
  cp build/release/python/dist/*.whl $out
  build wasm -DOMBRILO_TESTS=OFF
  bindings/js/build.sh build/wasm build/release
  cp -r build/release/js/package $stage  # what npm pack would write
  archive $stage package "ombrilo-$version.tgz"

  git archive --prefix="ombrilo-$version/" HEAD | gzip -9n >"$out/ombrilo-$version-source.tar.gz"
  /usr/bin/python3 scripts/sbom.py "$version" $out >"$out/ombrilo-$version.spdx.json"
  (cd $out && sha256sum -- * >"$OLDPWD/$stage/SHA256SUMS")
  mv $stage/SHA256SUMS $out
  lintian --fail-on error --suppress-tags maintscript-calls-ldconfig $out/*.deb
  rm -rf $stage
  ls -l $out
}
