	.loc 1 2
	.loc 1 2 3 is_stmt 0 basic_block prologue_end epilogue_begin isa 1
	.loc 1 2 3 is_stmt 2
	.loc 1 2 3 is_stmt
	.loc 1 2 3 isa
	.loc 1 2 3 bogus 7
