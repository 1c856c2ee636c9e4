	.call f, g
	.par f, g, "t"
	.globpassesref f, g, "t"
	.globread f, g, 4, 8, "t"
	.parwrite f, g, "t"
	.inline_definition f
	.assert 1, foo.bar, "text"
	.sameresource a, b, 1
