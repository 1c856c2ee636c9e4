	.cc_top f.function, f
f:
	nop
	.zeblabel "lab1", "/dir/one", "f.c", 12
	nop
	.cc_bottom f.function
g:
	.zeblabel "", "/dir/two", "", 0
	.zebendpoint "ep", "/d", "g.c", 3
	.zebcall "callee", "", "h.c", 0x10
	nop
