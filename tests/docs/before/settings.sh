pvr-make-stream --seconds 10 first.srf
