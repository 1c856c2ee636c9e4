	.call f, g
	.par f, g, "t"
	.globpassesref f, g, "t"
	.globread f, g, 4, 8, "t"
	.globread f, g, 0x10000, 0x10000, "t"
	.globwrite f, g, x, y, "t"
	.parwrite f, g, -1, 65535, "t"
	.parwrite f, g, "t"
	.inline_definition f
