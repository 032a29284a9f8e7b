pvr-make-stream --seconds 10 first.srf
pvr-make-stream --seconds 10 film.ts
pvrctl --quiet status # the first of the calls that are listed
cat > set.toml <<END
tuners = 12
[[channel]]
service_id = 1
name = "First"
number = "1-1"
bitrate = 188_000
END
