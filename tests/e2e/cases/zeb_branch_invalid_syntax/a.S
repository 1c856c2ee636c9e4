a:
	.zebbranch .
	.zebbranch 4+a
	.zebbranch a, .+2, b
	.zebbranch a, b-4
b:
	nop
