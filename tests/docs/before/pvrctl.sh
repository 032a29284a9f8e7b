pvr-make-stream --seconds 600 first.srf
cp "$SOURCE"/tests/data/golden/vexan-television.inf first.inf
printf 'a fingerprint' > block
cat > product.conf <<END
[custom-int]
com.brimmel/featureconf/product.num_of_ci=1
[conditional-access]
module=answers
[rights *first.srf]
parental-blocked=true
expired-sections=60-120;300-360
thumbnail-type=1
play-count=3
END
