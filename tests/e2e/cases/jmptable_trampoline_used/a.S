	.jmptable far, far, far
	.skip 200
far:
	nop
