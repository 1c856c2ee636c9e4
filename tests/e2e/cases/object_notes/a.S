	.ident "built by hand"
	.corerev "REVC"
