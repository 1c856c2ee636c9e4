	nop r0
