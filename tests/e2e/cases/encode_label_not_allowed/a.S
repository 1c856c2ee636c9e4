	add r0, r1, x
