pvr-make-stream --seconds 10 first.srf
# What a reader may have: programs that need a bus and a service, and one that brings the service along.
echo 'pvrctl play start "$1"' > my-player
echo 'pvrctl record start 1 --duration 1' > my-test
cat > my-recovery-test <<'END'
pvrctl sim crash
until pvrctl --quiet play start first.srf; do sleep 0.1; done 2>/dev/null
END
cat > my-own-service-and-its-test <<'END'
! pvrctl status 2>/dev/null
: > ready
pvr-simulator --quiet > ready &
until grep -q ready ready; do sleep 0.1; done
pvrctl play start first.srf
END
sed -i '1i #!/bin/sh -e' my-*
chmod +x my-*
