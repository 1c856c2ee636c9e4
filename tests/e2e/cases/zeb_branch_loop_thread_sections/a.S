a:
	nop
	.zebbranch
	.zebbranch a, b+4, c-4
	.zebthreadstart
	.zebloop 7
b:
	nop
	.cc_top g.function, g
g:
	.zebbranch b
	.zebloop 0xffffffff
	.zebthreadstop
	nop
	.cc_bottom g.function
	.zebthreadstop
	.zebthreadstart
c:
	nop
